/// \file
/// What some work asks of `operator new`, on the calling thread.
#pragma once

#include <functional>

namespace ztBenchmarks
{

struct Allocations
{
    double count, bytes;
};

Allocations allocationsOf(std::function<void()> const& work);

} // namespace ztBenchmarks
