// VTK: vtkImageReslice on one thread, which knows maps along the axes too; at positions, a call of
// its interpolator for each.
#include <vtkImageReslice.h>
#include <vtkMatrix4x4.h>
#include <vtkMultiThreader.h>

#include "../times/VtkSampler.h"
#include "Bulk.h"

namespace volux::bench {
namespace {

template <class T, Kernel K, Outside O>
class Reslice {
public:
    static constexpr bool kComparable = true;
    // Weights and sums are those of a float.
    static constexpr double kTolerance = tolerance<T>(kLargestVoxel * 0x1p-17);

    Reslice(const Source<T>& source, const Grid& grid)
    {
        reslice_->SetInputData(imageAround(source));
        place(grid);
        reslice_->SetInterpolationMode(K == Kernel::kNearest  ? VTK_RESLICE_NEAREST
                                       : K == Kernel::kLinear ? VTK_RESLICE_LINEAR
                                                              : VTK_RESLICE_CUBIC);
        reslice_->SetBackgroundLevel(kOutsideValue);
        if (O == Outside::kReplication) {
            reslice_->GetInterpolator()->SetTolerance(1e9);
        }
    }

    void run()
    {
        reslice_->Modified();
        reslice_->Update();
    }

    const T* result() const
    {
        return static_cast<const T*>(reslice_->GetOutput()->GetScalarPointer());
    }

private:
    // The axes hold the map from output indices to voxels.
    void place(const Grid& grid)
    {
        vtkNew<vtkMatrix4x4> axes;
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 4; ++column) {
                axes->SetElement(row, column, grid.map.rows[row][column]);
            }
        }
        reslice_->SetResliceAxes(axes);
        const auto last = [](unsigned int extent) { return static_cast<int>(extent) - 1; };
        reslice_->SetOutputExtent(0, last(grid.width), 0, last(grid.height), 0, last(grid.depth));
        reslice_->SetOutputSpacing(1, 1, 1);
        reslice_->SetOutputOrigin(0, 0, 0);
    }

    vtkNew<vtkImageReslice> reslice_;
};

template <class T, Kernel K, Outside O, class Target>
using Bulk = std::conditional_t<std::is_same_v<Target, Grid>, Reslice<T, K, O>,
                                Looped<VtkSampler<T, K, O>, T, Target>>;

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    vtkMultiThreader::SetGlobalMaximumNumberOfThreads(1);
    volux::bench::addBulk<volux::bench::Bulk>("VTK");
    return volux::bench::serveBulk(argc, argv);
}
