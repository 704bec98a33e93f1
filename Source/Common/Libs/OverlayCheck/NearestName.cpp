#include "ztOverlayCheck.h"

#include <algorithm>
#include <numeric>

namespace ztOverlayCheck
{

namespace
{

std::size_t editDistance(std::string const& a, std::string const& b)
{
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t(0));
    for (char const c : a)
    {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 1; j < row.size(); ++j)
        {
            std::size_t const replaced = diagonal + (c != b[j - 1]);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    return row.back();
}

} // namespace

std::string nearestName(std::string const& name, std::vector<std::string> const& known)
{
    // A name much longer than any known one is far from all of them; its end decides nothing.
    std::string const start = name.substr(0, 100);
    std::string nearest;
    std::size_t least = std::string::npos;
    for (std::string const& candidate : known)
        if (std::size_t const distance = editDistance(candidate, start); distance < least)
        {
            nearest = candidate;
            least = distance;
        }
    return nearest;
}

} // namespace ztOverlayCheck
