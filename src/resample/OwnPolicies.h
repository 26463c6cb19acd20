// Samples by volux_core itself, for policies of the caller's own.
#pragma once

#include "Task.h"

namespace volux::resample::detail {

// Wraps the voxels of an image in another one whose spacing is 1. Its getDoubleValueReal() then
// takes positions in voxels, to the last bit.
template <class T>
class OwnPolicies {
public:
    OwnPolicies(const core::VxImage<T>& image, const Options& options) : options_(options)
    {
        voxels_.initializeWithPointer(image.getBufferPointer(), image.getWidth(), image.getHeight(),
                                      image.getDepth(), image.getChannels());
        const Raster there = rasterOf(image);
        const Raster here = rasterOf(voxels_);
        if (there.strideX != here.strideX || there.strideY != here.strideY ||
            there.strideZ != here.strideZ || there.strideC != here.strideC) {
            // Strides that were set fit 32 bits; longer ones are those of every new image.
            voxels_.setImageStride(elements(there.strideY), elements(there.strideZ),
                                   elements(there.strideC), elements(there.strideX));
        }
    }

    OwnSample sample() const
    {
        return [this](double x, double y, double z, int c) {
            return voxels_.getDoubleValueReal(x, y, z, c, options_.interpolator, options_.border,
                                              static_cast<T>(options_.outside));
        };
    }

private:
    static unsigned int elements(std::int64_t bytes)
    {
        return static_cast<unsigned int>(bytes / static_cast<std::int64_t>(sizeof(T)));
    }

    const Options& options_;
    core::VxImage<T> voxels_;
};

}  // namespace volux::resample::detail
