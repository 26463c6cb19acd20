// A nest of loops over the elements of a source and a destination, and its order.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace volux::core::detail {

struct Loop {
    std::int64_t count;
    std::int64_t from;  // source elements per step
    std::int64_t to;    // destination elements per step
};

using Nest = std::array<Loop, 4>;  // outermost first

inline bool isEmpty(const Nest& nest)
{
    return std::any_of(nest.begin(), nest.end(), [](const Loop& loop) { return loop.count == 0; });
}

// Merges adjacent loops that walk contiguous memory; the elements and their order stay the same.
// The loops that remain are the inner ones. A merged loop has at most as many steps as an extent.
inline Nest fused(Nest nest)
{
    constexpr std::int64_t kMostSteps = std::numeric_limits<int>::max();
    auto inner = nest.rbegin();
    for (auto outer = inner + 1; outer != nest.rend(); ++outer) {
        const Loop loop = *outer;
        *outer = {1, 0, 0};
        if (inner->count == 1) {
            *inner = loop;
        } else if (loop.count <= kMostSteps / inner->count && loop.to == inner->to * inner->count &&
                   loop.from == inner->from * inner->count) {
            inner->count *= loop.count;
        } else if (loop.count != 1) {
            *++inner = loop;
        }
    }
    return nest;
}

template <class T>
T* stepped(T* first, std::int64_t elements)
{
    return first + static_cast<std::ptrdiff_t>(elements);
}

}  // namespace volux::core::detail
