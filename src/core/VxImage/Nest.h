// A nest of loops over the elements of two memories: in which order they are visited.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace volux::core::detail {

struct Loop {
    std::int64_t count;
    std::int64_t from;  // elements between two steps, where they are read
    std::int64_t to;    // and where they are written
};

using Nest = std::array<Loop, 4>;  // outermost first

inline bool isEmpty(const Nest& nest)
{
    return std::any_of(nest.begin(), nest.end(), [](const Loop& loop) { return loop.count == 0; });
}

// The same elements in the same order by fewer loops, which are the inner ones: a loop that goes on
// where the one inside it has ended is one with it, unless it got more steps than an extent has.
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
