// VTK: vtkImageReslice on one thread, which knows maps along the axes too.
#include <vtkAOSDataArrayTemplate.h>
#include <vtkImageData.h>
#include <vtkImageInterpolator.h>
#include <vtkImageReslice.h>
#include <vtkMatrix4x4.h>
#include <vtkMultiThreader.h>
#include <vtkNew.h>
#include <vtkPointData.h>

#include "Bulk.h"

namespace volux::bench {
namespace {

template <class T>
class Reslice {
public:
    // It rounds a tie up where the module rounds it away from zero.
    static constexpr double kTolerance = std::is_same_v<T, short> ? 0.5 : 1e-3;

    Reslice(const Job& job, Volume<T>& source, Kernel kernel, Outside outside)
    {
        constexpr int kCallersOwn = 1;
        vtkNew<vtkAOSDataArrayTemplate<T>> voxels;
        voxels->SetArray(source.voxels.data(), static_cast<vtkIdType>(source.voxels.size()),
                         kCallersOwn);
        vtkNew<vtkImageData> image;
        image->SetDimensions(job.extent, job.extent, job.extent);
        image->GetPointData()->SetScalars(voxels);
        reslice_->SetInputData(image);
        place(job.grid);
        reslice_->SetInterpolationMode(kernel == Kernel::kNearest  ? VTK_RESLICE_NEAREST
                                       : kernel == Kernel::kLinear ? VTK_RESLICE_LINEAR
                                                                   : VTK_RESLICE_CUBIC);
        reslice_->SetBackgroundLevel(kOutsideValue);
        if (outside == Outside::kReplication) {
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
    void place(const resample::Grid& grid)
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

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    vtkMultiThreader::SetGlobalMaximumNumberOfThreads(1);
    volux::bench::addLibrary<volux::bench::Reslice>("VTK");
    return volux::bench::serve(argc, argv);
}
