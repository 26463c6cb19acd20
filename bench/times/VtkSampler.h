// VTK: vtkImageInterpolator, whose cubic is volux_core's kernel; its own kernels are those of the
// installed library.
#pragma once

#include <vtkAOSDataArrayTemplate.h>
#include <vtkImageData.h>
#include <vtkImageInterpolator.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkSmartPointer.h>

#include "Sampling.h"

namespace volux::bench {

template <class T>
vtkSmartPointer<vtkImageData> imageAround(const Source<T>& source)
{
    constexpr int kCallersOwn = 1;
    vtkNew<vtkAOSDataArrayTemplate<T>> voxels;
    voxels->SetArray(source.data(), static_cast<vtkIdType>(source.voxels.size()), kCallersOwn);
    auto image = vtkSmartPointer<vtkImageData>::New();
    image->SetDimensions(source.extent, source.extent, source.extent);
    image->GetPointData()->SetScalars(voxels);
    return image;
}

template <class T, Kernel K, Outside O>
class VtkSampler {
public:
    static constexpr bool kComparable = true;
    // Some ten roundings to 53 bits of sums whose terms are a few times the largest voxel.
    static constexpr double kTolerance = K == Kernel::kNearest ? 0.0 : kLargestVoxel * 0x1p-46;

    explicit VtkSampler(const Source<T>& source)
    {
        interpolator_->SetInterpolationMode(kMode);
        interpolator_->SetBorderModeToClamp();
        interpolator_->SetOutValue(kOutsideValue);
        interpolator_->Initialize(imageAround(source));
    }

    double operator()(double x, double y, double z) const
    {
        const double point[3] = {x, y, z};
        double value = kOutsideValue;
        if (O == Outside::kReplication || interpolator_->CheckBoundsIJK(point)) {
            interpolator_->InterpolateIJK(point, &value);
        }
        return value;
    }

private:
    static constexpr int kMode = K == Kernel::kNearest  ? VTK_NEAREST_INTERPOLATION
                                 : K == Kernel::kLinear ? VTK_LINEAR_INTERPOLATION
                                                        : VTK_CUBIC_INTERPOLATION;

    vtkNew<vtkImageInterpolator> interpolator_;
};

}  // namespace volux::bench
