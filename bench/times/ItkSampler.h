// ITK: nearest, linear, and the B-spline of order 3, which is another kernel than the tricubic one.
#pragma once

#include <itkBSplineInterpolateImageFunction.h>
#include <itkImage.h>
#include <itkLinearInterpolateImageFunction.h>
#include <itkNearestNeighborInterpolateImageFunction.h>

#include <algorithm>
#include <map>

#include "Sampling.h"

namespace volux::bench {

template <class T, Kernel K>
struct Functions {
    using Image = itk::Image<T, 3>;
    using Type = std::conditional_t<
        K == Kernel::kNearest, itk::NearestNeighborInterpolateImageFunction<Image, double>,
        std::conditional_t<K == Kernel::kLinear, itk::LinearInterpolateImageFunction<Image, double>,
                           itk::BSplineInterpolateImageFunction<Image, double, double>>>;
    using Pointer = typename Type::Pointer;

    // Both borders and all workloads of a size share one: a B-spline's coefficients take long.
    static Pointer of(const Source<T>& source)
    {
        static std::map<int, Pointer> made;
        Pointer& function = made[source.extent];
        if (!function) {
            function = Type::New();
            if constexpr (K == Kernel::kCubic) {
                function->SetSplineOrder(3);
            }
            function->SetInputImage(imageAround(source));
        }
        return function;
    }

    static typename Image::Pointer imageAround(const Source<T>& source)
    {
        auto image = Image::New();
        const auto extent = static_cast<itk::SizeValueType>(source.extent);
        image->SetRegions(typename Image::SizeType{{extent, extent, extent}});
        image->GetPixelContainer()->SetImportPointer(source.data(), source.voxels.size(), false);
        return image;
    }
};

template <class T, Kernel K, Outside O>
class ItkSampler {
public:
    static constexpr bool kComparable = K != Kernel::kCubic;
    // As for any sum in double of a few roundings.
    static constexpr double kTolerance = K == Kernel::kNearest ? 0.0 : kLargestVoxel * 0x1p-46;

    explicit ItkSampler(const Source<T>& source)
        : function_(Functions<T, K>::of(source)), last_(source.extent - 1)
    {
    }

    double operator()(double x, double y, double z) const
    {
        itk::ContinuousIndex<double, 3> index;
        index[0] = placed(x);
        index[1] = placed(y);
        index[2] = placed(z);
        if (O == Outside::kConstant && !function_->IsInsideBuffer(index)) {
            return kOutsideValue;
        }
        return function_->EvaluateAtContinuousIndex(index);
    }

private:
    double placed(double position) const
    {
        return O == Outside::kReplication ? std::clamp(position, 0.0, last_) : position;
    }

    typename Functions<T, K>::Pointer function_;
    double last_;
};

}  // namespace volux::bench
