// Volumes and positions that are the same with every compiler and standard library.
#pragma once

#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "volux/core.h"

namespace volux::bench {

struct Position {
    double x;
    double y;
    double z;
};

class Uniform {
public:
    explicit Uniform(std::uint64_t seed) : engine_(seed) {}

    /// A number from first up to last; the standard's own distributions differ between libraries.
    double between(double first, double last)
    {
        constexpr double kUnit = 1.0 / (std::uint64_t{1} << 53);
        return first + static_cast<double>(engine_() >> 11) * kUnit * (last - first);
    }

private:
    std::mt19937_64 engine_;
};

/// Noise of twelve bits, as a scanner has it.
template <class T>
void fillWithNoise(core::VxImage<T>& image, const core::ImageSize& size)
{
    Uniform uniform(1);
    image.initialize(size.width, size.height, size.depth, size.channels);
    const std::uint64_t elements =
        std::uint64_t{size.width} * size.height * size.depth * size.channels;
    for (std::uint64_t element = 0; element < elements; ++element)
        image.getBufferPointer()[element] = static_cast<T>(uniform.between(0, 4096));
}

/// Every kernel's neighbours are voxels of the image.
inline Position inside(Uniform& uniform, const core::ImageSize& size)
{
    return {uniform.between(1, size.width - 2.0), uniform.between(1, size.height - 2.0),
            uniform.between(1, size.depth - 2.0)};
}

/// Beyond one of the six faces, by less than half a voxel: the nearest neighbour is outside, and so
/// are some of the other kernels' neighbours.
inline Position beyondFace(Uniform& uniform, const core::ImageSize& size)
{
    Position position = inside(uniform, size);
    const std::array<double*, 3> axes = {&position.x, &position.y, &position.z};
    const std::array<double, 3> extents = {static_cast<double>(size.width),
                                           static_cast<double>(size.height),
                                           static_cast<double>(size.depth)};
    const auto face = static_cast<std::size_t>(uniform.between(0, 6));
    const double beyond = uniform.between(0.5, 1.0);
    *axes[face / 2] = face % 2 == 0 ? -beyond : extents[face / 2] - 1.0 + beyond;
    return position;
}

template <class Place>
std::vector<Position> positions(int count, const core::ImageSize& size, Place place)
{
    Uniform uniform(2);
    std::vector<Position> found;
    for (int made = 0; made < count; ++made)
        found.push_back(place(uniform, size));
    return found;
}

}  // namespace volux::bench
