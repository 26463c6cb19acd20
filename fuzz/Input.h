// The bytes that the fuzzer makes up, read as numbers. After the last byte come zeros.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "support/ElementTypes.h"

namespace volux::fuzz {

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : next_(data), left_(size) {}

    bool empty() const { return left_ == 0; }
    const std::uint8_t* rest() const { return next_; }
    std::size_t restSize() const { return left_; }

    /// Any bit pattern of the type.
    template <class T>
    T raw()
    {
        T value{};
        const std::size_t taken = std::min(left_, sizeof value);
        std::memcpy(&value, next_, taken);
        next_ += taken;
        left_ -= taken;
        return value;
    }

    /// From 0 to limit - 1, for limits up to 256.
    unsigned int below(unsigned int limit) { return raw<std::uint8_t>() % limit; }
    bool flag() { return (raw<std::uint8_t>() & 1U) != 0; }

private:
    const std::uint8_t* next_;
    std::size_t left_;
};

}  // namespace volux::fuzz
