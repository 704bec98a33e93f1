#include "QtLibraries.h"

#include <regex>
#include <string>

#if __has_include(<link.h>)
#include <link.h>
#endif

namespace ztOverlayCheck
{

std::set<int> loadedQtMajors()
{
    std::set<int> majors;
#if __has_include(<link.h>)
    auto const visit = [](dl_phdr_info* library, std::size_t, void* result) {
        static std::regex const core(".*/libQt([0-9]+)Core\\.so.*");
        std::cmatch match;
        if (std::regex_match(library->dlpi_name, match, core))
            static_cast<std::set<int>*>(result)->insert(std::stoi(match[1]));
        return 0;
    };
    dl_iterate_phdr(visit, &majors);
#endif
    return majors;
}

} // namespace ztOverlayCheck
