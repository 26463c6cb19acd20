// ITK: ResampleImageFilter on one thread; at positions, a call of its interpolator for each. Its
// cubic B-spline is another kernel, whose coefficients the filter computes anew each time, and is
// left out. Means of blocks are BinShrinkImageFilter's.
#include <itkAffineTransform.h>
#include <itkBinShrinkImageFilter.h>
#include <itkDisplacementFieldTransform.h>
#include <itkLabelImageGaussianInterpolateImageFunction.h>
#include <itkMultiThreaderBase.h>
#include <itkNearestNeighborExtrapolateImageFunction.h>
#include <itkResampleImageFilter.h>

#include <cstring>

#include "../times/ItkSampler.h"
#include "LabelMap.h"
#include "Means.h"

namespace volux::bench {
namespace {

// Its transforms compute in a precision.
template <class T, Kernel K, Outside O, class Precision>
class Filter {
public:
    static constexpr bool kComparable = true;
    // It cuts the fraction of an integer off. In float, a position is known to some 2^-16 voxels.
    static constexpr double kTolerance =
        (std::is_same_v<T, short> ? 0.5 : 0.0) +
        tolerance<T>(kLargestVoxel * (std::is_same_v<Precision, double> ? 0x1p-46 : 3 * 0x1p-16));

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

protected:
    using Image = itk::Image<T, 3>;
    using Type = itk::ResampleImageFilter<Image, Image, double, Precision>;

    Filter(const Source<T>& source, const Grid& grid,
           const typename Type::TransformType::Pointer& transform)
    {
        filter_->SetInput(Functions<T, K>::imageAround(source));
        filter_->SetInterpolator(Functions<T, K>::Type::New());
        filter_->SetSize({{grid.width, grid.height, grid.depth}});
        filter_->SetTransform(transform);
        filter_->SetDefaultPixelValue(kOutsideValue);
        if (O == Outside::kReplication) {
            filter_->SetExtrapolator(
                itk::NearestNeighborExtrapolateImageFunction<Image, double>::New());
        }
        filter_->SetNumberOfWorkUnits(1);
    }

    typename Type::Pointer filter_ = Type::New();
};

template <class T, Kernel K, Outside O>
class AffineFilter : public Filter<T, K, O, double> {
public:
    AffineFilter(const Source<T>& source, const Grid& grid)
        : Filter<T, K, O, double>(source, grid, transform(grid).GetPointer())
    {
    }

private:
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
};

// The grid has steps of 1 along the axes: where it begins is the output's origin.
template <class T, Kernel K, Outside O>
class WarpFilter : public Filter<T, K, O, float> {
public:
    WarpFilter(const Source<T>& source, const Warped& warped)
        : Filter<T, K, O, float>(source, warped.grid, transform(warped).GetPointer())
    {
        const auto& rows = warped.grid.map.rows;
        const double origin[] = {rows[0][3], rows[1][3], rows[2][3]};
        this->filter_->SetOutputOrigin(origin);
    }

private:
    using Transform = itk::DisplacementFieldTransform<float, 3>;

    static typename Transform::Pointer transform(const Warped& warped)
    {
        using Field = typename Transform::DisplacementFieldType;
        constexpr itk::SizeValueType kNodes = Warped::kNodes;
        auto field = Field::New();
        field->SetRegions(typename Field::SizeType{{kNodes, kNodes, kNodes}});
        field->SetSpacing(typename Field::SpacingType(Warped::kApart));
        const double origin[] = {Warped::kFirst, Warped::kFirst, Warped::kFirst};
        field->SetOrigin(origin);
        field->Allocate();
        static_assert(sizeof(typename Field::PixelType) == 3 * sizeof(float));
        std::memcpy(field->GetBufferPointer(), warped.vectors.data(),
                    warped.vectors.size() * sizeof(float));
        auto made = Transform::New();
        made->SetDisplacementField(field);
        return made;
    }
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
    AffineFilter<short, Kernel::kNearest, Outside::kReplication> filter(
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
using Bulk =
    std::conditional_t<std::is_same_v<Target, Grid>, AffineFilter<T, K, O>,
                       std::conditional_t<std::is_same_v<Target, Warped>, WarpFilter<T, K, O>,
                                          Looped<ItkSampler<T, K, O>, T, Target>>>;

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
    bench::addKernel<bench::Bulk, bench::WarpedVolume, bench::Kernel::kLinear>("ITK");
    bench::addMeans<bench::BinShrink>("ITK");
    bench::addLabels<bench::ObliqueVolume>();
    bench::addLabels<bench::UpsampledVolume>();
    return bench::serveBulk(argc, argv);
}
