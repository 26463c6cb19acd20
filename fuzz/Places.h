// Positions for the calls that read at any.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "Input.h"
#include "Scene.h"
#include "support/GuardedPages.h"
#include "volux/resample/Resample.h"

namespace volux::fuzz {

/// Positions in three arrays, each between forbidden pages.
class Places {
public:
    explicit Places(Input& input)
        : count_(input.below(40)),
          stride_(static_cast<int>(input.below(6)) - 2),
          span_(count_ == 0 ? 1 : std::abs(stride_) * (static_cast<std::int64_t>(count_) - 1) + 1)
    {
        const bool atEnd = input.flag();
        for (std::size_t n = 0; n < 3; ++n) {
            arrays_[n] = pages().place<double>(static_cast<std::size_t>(span_), atEnd, n);
            std::generate_n(arrays_[n], span_, [&] { return someCoordinate(input); });
        }
    }

    std::size_t count() const { return count_; }

    resample::Positions all() const
    {
        const std::int64_t first = stride_ < 0 ? span_ - 1 : 0;
        return {arrays_[0] + first, arrays_[1] + first, arrays_[2] + first, stride_};
    }

    resample::Position operator[](std::size_t n) const
    {
        const resample::Positions from = all();
        const std::int64_t at = stride_ * static_cast<std::int64_t>(n);
        return {from.x[at], from.y[at], from.z[at]};
    }

private:
    static const test::GuardedPages& pages()
    {
        static const test::GuardedPages rooms(1, 3);
        return rooms;
    }

    std::size_t count_;
    std::int64_t stride_;
    std::int64_t span_;
    std::array<double*, 3> arrays_{};
};

}  // namespace volux::fuzz
