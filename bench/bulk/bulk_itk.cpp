// ITK: ResampleImageFilter on one thread; at positions, a call of its interpolator for each. Its
// cubic B-spline is another kernel, whose coefficients the filter computes anew each time, and is
// left out. Means of blocks are BinShrinkImageFilter's.
#include <itkAffineTransform.h>
#include <itkBinShrinkImageFilter.h>
#include <itkLabelImageGaussianInterpolateImageFunction.h>
#include <itkMultiThreaderBase.h>
#include <itkNearestNeighborExtrapolateImageFunction.h>
#include <itkResampleImageFilter.h>

#include "../times/ItkSampler.h"
#include "LabelMap.h"
#include "Means.h"

namespace volux::bench {
namespace {

template <class T, Kernel K, Outside O>
class Filter {
public:
    static constexpr bool kComparable = true;
    // It cuts the fraction off.
    static constexpr double kTolerance =
        (std::is_same_v<T, short> ? 0.5 : 0.0) + tolerance<T>(kLargestVoxel * 0x1p-46);

    Filter(const Source<T>& source, const Grid& grid)
    {
        filter_->SetInput(Functions<T, K>::imageAround(source));
        filter_->SetInterpolator(Functions<T, K>::Type::New());
        filter_->SetSize({{grid.width, grid.height, grid.depth}});
        filter_->SetTransform(transform(grid));
        filter_->SetDefaultPixelValue(kOutsideValue);
        if (O == Outside::kReplication) {
            filter_->SetExtrapolator(
                itk::NearestNeighborExtrapolateImageFunction<Image, double>::New());
        }
        filter_->SetNumberOfWorkUnits(1);
    }

    void run()
    {
        filter_->Modified();
        filter_->Update();
    }

    void use(itk::InterpolateImageFunction<itk::Image<T, 3>, double>* interpolator)
    {
        filter_->SetInterpolator(interpolator);
    }

    const T* result() const { return filter_->GetOutput()->GetBufferPointer(); }

private:
    using Image = itk::Image<T, 3>;
    using Transform = itk::AffineTransform<double, 3>;

    // From the indices of the output, whose spacing is 1, to those of the source.
    static typename Transform::Pointer transform(const Grid& grid)
    {
        typename Transform::MatrixType matrix;
        typename Transform::OutputVectorType offset;
        for (unsigned int row = 0; row < 3; ++row) {
            for (unsigned int column = 0; column < 3; ++column) {
                matrix(row, column) = grid.map.rows[row][column];
            }
            offset[row] = grid.map.rows[row][3];
        }
        auto made = Transform::New();
        made->SetMatrix(matrix);
        made->SetOffset(offset);
        return made;
    }

    typename itk::ResampleImageFilter<Image, Image>::Pointer filter_ =
        itk::ResampleImageFilter<Image, Image>::New();
};

template <class T>
class BinShrink {
public:
    BinShrink(const Source<T>& source, unsigned int factor)
    {
        filter_->SetInput(Functions<T, Kernel::kLinear>::imageAround(source));
        filter_->SetShrinkFactors(factor);
        filter_->SetNumberOfWorkUnits(1);
    }

    void run()
    {
        filter_->Modified();
        filter_->Update();
    }

    const T* result() const { return filter_->GetOutput()->GetBufferPointer(); }

private:
    using Image = itk::Image<T, 3>;

    typename itk::BinShrinkImageFilter<Image, Image>::Pointer filter_ =
        itk::BinShrinkImageFilter<Image, Image>::New();
};

// Its interpolator for labels weighs by a Gaussian, within a voxel here, so its results are others.
template <class Workload>
void measureLabels(benchmark::State& state)
{
    using Image = itk::Image<short, 3>;
    using Function = itk::LabelImageGaussianInterpolateImageFunction<Image, double>;
    auto function = Function::New();
    double sigma[3] = {0.5, 0.5, 0.5};
    function->SetParameters(sigma, 2.0);
    static const Grid grid = Workload::target();
    Filter<short, Kernel::kNearest, Outside::kReplication> filter(
        labels<Regions, Workload::kExtent>(), grid);
    filter.use(function);
    filter.run();
    for (auto _ : state) {
        filter.run();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count(grid)));
}

template <class Workload>
void addLabels()
{
    benchmark::RegisterBenchmark(labelsRow<Workload, Regions>("ITK").c_str(),
                                 measureLabels<Workload>)
        ->MeasureProcessCPUTime();
}

template <class T, Kernel K, Outside O, class Target>
using Bulk = std::conditional_t<std::is_same_v<Target, Grid>, Filter<T, K, O>,
                                Looped<ItkSampler<T, K, O>, T, Target>>;

template <class Workload>
void addBoth()
{
    addKernel<Bulk, Workload, Kernel::kNearest>("ITK");
    addKernel<Bulk, Workload, Kernel::kLinear>("ITK");
}

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    namespace bench = volux::bench;
    itk::MultiThreaderBase::SetGlobalMaximumNumberOfThreads(1);
    bench::addBoth<bench::ObliqueVolume>();
    bench::addBoth<bench::UpsampledVolume>();
    bench::addBoth<bench::RandomPositions>();
    bench::addKernel<bench::Bulk, bench::ViewersPlane, bench::Kernel::kLinear>("ITK");
    bench::addMeans<bench::BinShrink>("ITK");
    bench::addLabels<bench::ObliqueVolume>();
    bench::addLabels<bench::UpsampledVolume>();
    return bench::serveBulk(argc, argv);
}
