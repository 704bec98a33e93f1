/// \file
/// What some work asks of `operator new`, on the calling thread, and how it takes a refusal.
#pragma once

#include <cstddef>
#include <functional>

struct Allocations
{
    double count, bytes;
};

Allocations allocationsOf(std::function<void()> const& work);

/// Does some work while the allocation of a number, from 1 on, throws std::bad_alloc; with 0 none does. Those that Qt
/// makes itself aren't counted: it doesn't promise to survive. \return whether the work made so many
bool workWithRefusal(std::size_t number, std::function<void()> const& work);
