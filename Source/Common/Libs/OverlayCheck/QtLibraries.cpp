#include "QtLibraries.h"

#include <cstdio>
#include <cstring>

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
        char const* const slash = std::strrchr(library->dlpi_name, '/');
        int major = 0, length = 0;
        if (std::sscanf(slash ? slash : "", "/libQt%dCore.so%n", &major, &length) == 1 && length > 0)
            static_cast<std::set<int>*>(result)->insert(major);
        return 0;
    };
    dl_iterate_phdr(visit, &majors);
#endif
    return majors;
}

} // namespace ztOverlayCheck
