#include "ShortNumber.h"

#include <array>
#include <cstdio>

namespace reslice {

std::string shortNumber(double value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.4g", value);
    return text.data();
}

}  // namespace reslice
