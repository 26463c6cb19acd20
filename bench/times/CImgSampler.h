// CImg: positions are float, and so are the sums of short and float voxels.
#pragma once

#include <CImg.h>

#include "Sampling.h"

namespace volux::bench {

// Rounds half up as volux_core does, without a call.
int nearestVoxel(double position)
{
    const double raised = position + 0.5;
    const int truncated = static_cast<int>(raised);
    return truncated - static_cast<int>(raised < truncated);
}

template <class T, Kernel K, Outside O>
class CImgSampler {
public:
    static constexpr bool kComparable = true;
    // Some ten roundings to 24 bits of sums whose terms are a few times the largest voxel.
    static constexpr double kTolerance = K == Kernel::kNearest ? 0.0 : kLargestVoxel * 0x1p-17;

    explicit CImgSampler(const Source<T>& source)
        : image_(source.data(), size(source), size(source), size(source), 1, true)
    {
    }

    auto operator()(double x, double y, double z) const
    {
        if constexpr (K == Kernel::kNearest) {
            return nearest(nearestVoxel(x), nearestVoxel(y), nearestVoxel(z));
        } else {
            return between(static_cast<float>(x), static_cast<float>(y), static_cast<float>(z));
        }
    }

private:
    static unsigned int size(const Source<T>& source)
    {
        return static_cast<unsigned int>(source.extent);
    }

    T nearest(int x, int y, int z) const
    {
        if constexpr (O == Outside::kConstant) {
            return image_.atXYZ(x, y, z, 0, T{kOutsideValue});
        } else {
            return image_.atXYZ(x, y, z);
        }
    }

    auto between(float x, float y, float z) const
    {
        if constexpr (K == Kernel::kLinear && O == Outside::kConstant) {
            return image_.linear_atXYZ(x, y, z, 0, T{kOutsideValue});
        } else if constexpr (K == Kernel::kLinear) {
            return image_.linear_atXYZ(x, y, z);
        } else if constexpr (O == Outside::kConstant) {
            return image_.cubic_atXYZ(x, y, z, 0, T{kOutsideValue});
        } else {
            return image_.cubic_atXYZ(x, y, z);
        }
    }

    cimg_library::CImg<T> image_;
};

}  // namespace volux::bench
