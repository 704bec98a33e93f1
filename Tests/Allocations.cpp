#include "Allocations.h"

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace
{

thread_local std::size_t madeCount = 0, madeBytes = 0;
/// The refused allocation comes as the last of so many, 0 if there is none.
thread_local std::size_t leftUntilRefusal = 0;

bool isQt(void* caller)
{
    Dl_info object{};
    return dladdr(caller, &object) != 0 && std::strstr(object.dli_fname, "libQt");
}

bool isRefused(void* caller)
{
    return leftUntilRefusal > 0 && !isQt(caller) && --leftUntilRefusal == 0;
}

} // namespace

void* operator new(std::size_t size)
{
    ++madeCount;
    madeBytes += size;
    if (void* memory = isRefused(__builtin_return_address(0)) ? nullptr : std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

Allocations allocationsOf(std::function<void()> const& work)
{
    std::size_t const countBefore = madeCount, bytesBefore = madeBytes;
    work();
    return {double(madeCount - countBefore), double(madeBytes - bytesBefore)};
}

bool workWithRefusal(std::size_t number, std::function<void()> const& work)
{
    leftUntilRefusal = number;
    work();
    return std::exchange(leftUntilRefusal, 0) == 0;
}
