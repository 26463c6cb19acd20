#include "Window.h"

#include <algorithm>

namespace reslice {
namespace {

constexpr std::size_t kSampleSize = 500000;
constexpr double kDarkest = 0.02;
constexpr double kBrightest = 0.998;

double quantile(std::vector<double>& values, double part)
{
    const auto rank = static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + rank, values.end());
    return values[static_cast<std::size_t>(rank)];
}

}  // namespace

double Window::grey(double intensity) const
{
    const double part = (intensity - low) / (high - low);
    return part > 0.0 ? std::min(part, 1.0) : 0.0;
}

Window windowOf(const Volume& volume)
{
    std::vector<double> intensities = volume.someIntensities(kSampleSize);
    if (intensities.empty())
        return {0.0, 1.0};
    const double low = quantile(intensities, kDarkest);
    const double high = quantile(intensities, kBrightest);
    return {low, high > low ? high : low + 1.0};
}

}  // namespace reslice
