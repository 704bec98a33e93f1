#include "Allocations.h"

#include <cstdlib>
#include <new>

static thread_local std::size_t allocationCount = 0, allocatedBytes = 0;

void* operator new(std::size_t size)
{
    ++allocationCount;
    allocatedBytes += size;
    if (void* memory = std::malloc(size))
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

namespace ztBenchmarks
{

Allocations allocationsOf(std::function<void()> const& work)
{
    std::size_t const countBefore = allocationCount, bytesBefore = allocatedBytes;
    work();
    return {double(allocationCount - countBefore), double(allocatedBytes - bytesBefore)};
}

} // namespace ztBenchmarks
