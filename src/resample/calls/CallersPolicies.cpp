#include "CallersPolicies.h"

#include <limits>
#include <memory>

#include "Checks.h"
#include "exact/ElementTypes.h"

namespace volux::resample::detail {

using core::ErrorType;
using core::SUCCESS;
using core::VxImage;

namespace {

bool haveEqualStrides(const VoxelLayout& a, const VoxelLayout& b)
{
    return a.strideX == b.strideX && a.strideY == b.strideY && a.strideZ == b.strideZ &&
           a.strideC == b.strideC;
}

// Whether VxImage::setImageStride() takes all strides.
bool haveShortStrides(const VoxelLayout& layout)
{
    const auto isShort = [](std::int64_t stride) {
        return stride >= 0 && stride <= std::numeric_limits<unsigned int>::max();
    };
    return isShort(layout.strideX) && isShort(layout.strideY) && isShort(layout.strideZ) &&
           isShort(layout.strideC);
}

template <class T>
void copyVoxels(const View<const T>& from, T* to)
{
    for (std::int64_t z = 0; z < from.depth; ++z) {
        for (std::int64_t y = 0; y < from.height; ++y) {
            for (std::int64_t x = 0; x < from.width; ++x) {
                const T* const voxel =
                    from.data + (from.strideZ * z + from.strideY * y + from.strideX * x);
                for (std::int64_t c = 0; c < from.channels; ++c) {
                    *to++ = voxel[from.strideC * c];
                }
            }
        }
    }
}

// The size is one that an image may have.
template <class T>
ErrorType represent(const View<const T>& source, VxImage<T>& image)
{
    const auto& [w, h, d, c] = sizeOf(source);
    const View<const T> contiguous(source.data, w, h, d, c);
    const bool isContiguous = haveEqualStrides(source, contiguous);
    if (!isContiguous && !haveShortStrides(source)) {
        const ErrorType result = image.initialize(w, h, d, c);
        if (result == SUCCESS) {
            copyVoxels(source, image.getBufferPointer());
        }
        return result;
    }
    // VxImage knows no const memory, but only const members of this one are called.
    image.initializeWithPointer(const_cast<T*>(source.data), w, h, d, c);
    if (!isContiguous) {
        const auto stride = [](std::int64_t elements) {
            return static_cast<unsigned int>(elements);
        };
        image.setImageStride(stride(source.strideY), stride(source.strideZ), stride(source.strideC),
                             stride(source.strideX));
    }
    return SUCCESS;
}

}  // namespace

ErrorType sampleByImage(const View<const void>& source, const Options& options, OwnSample& sample,
                        OwnSample* nearest)
{
    return exact::withElementType(source.type, [&](auto element) {
        using T = typename decltype(element)::Type;
        const auto image = std::make_shared<VxImage<T>>();
        const ErrorType result =
            represent(View<const T>(static_cast<const T*>(source.data), source), *image);
        const auto with = [&](core::Interpolator* kernel) {
            return [image, kernel, &options](double x, double y, double z, int c) {
                return image->getDoubleValueReal(x, y, z, c, kernel, options.border,
                                                 static_cast<T>(options.outside));
            };
        };
        sample = with(options.interpolator);
        if (nearest != nullptr) {
            *nearest = with(&core::InterpolationType::NEAREST_NEIGHBOR);
        }
        return result;
    });
}

}  // namespace volux::resample::detail
