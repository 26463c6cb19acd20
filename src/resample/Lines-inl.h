// Rows of samples along the axes, for the instruction set that Highway is compiling.
//
// A row of the source serves many rows of the output. It is expanded once: each neighbour of each
// column as a double, side by side with that of the next column. What is left of a sample are its
// products and sums, in the order of sampleOne().
#if defined(VOLUX_RESAMPLE_LINES) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_LINES
#undef VOLUX_RESAMPLE_LINES
#else
#define VOLUX_RESAMPLE_LINES
#endif

#include <hwy/highway.h>

#include <algorithm>

#include "Blocks.h"
#include "Exact.h"
#include "Samples-inl.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// The neighbours of the columns of a vector, where all of them lie among as many voxels side by
// side as there are lanes: loaded together, and moved to their columns.
template <class T, Kernel K>
class Window {
public:
    static constexpr std::int64_t kNone = -1;

    Window(const RealAxis& axis, const Neighbours<K>& xs, std::int64_t voxel) : voxel_(voxel)
    {
        const Real first = real(axis.first + static_cast<double>(voxel));
        for (int i = 0; i < kReach; ++i) {
            lanes_[i] = wholeNumber(hn::Sub(xs.within(axis, i), first));
        }
    }

    // The first voxel of the window, from the first that the brick holds; kNone if there is none.
    static std::int64_t find(const RealAxis& axis, const Neighbours<K>& xs)
    {
        const Reals d;
        const auto lanes = static_cast<double>(hn::Lanes(d));
        const double lowest = hn::GetLane(hn::MinOfLanes(d, xs.within(axis, 0)));
        const double highest = hn::GetLane(hn::MaxOfLanes(d, xs.within(axis, kReach - 1)));
        const double first = std::min(lowest, axis.last - (lanes - 1.0));
        const bool isThere = first >= axis.first && highest - first < lanes;
        return isThere ? static_cast<std::int64_t>(first - axis.first) : kNone;
    }

    void read(const Voxels& voxels, std::int64_t row, Real (&values)[reach(K)]) const
    {
        const Real all =
            loadVoxels<T>(voxels.data + row + voxel_ * static_cast<std::int64_t>(sizeof(T)));
        for (int i = 0; i < kReach; ++i) {
            values[i] = hn::TableLookupLanes(all, hn::IndicesFromVec(Reals(), lanes_[i]));
        }
    }

private:
    static constexpr int kReach = reach(K);

    std::int64_t voxel_;
    Offset lanes_[kReach];
};

template <class T, Kernel K, bool SideBySide>
class LineMaker {
public:
    explicit LineMaker(const Lines& lines)
        : lines_(lines),
          voxels_(lines.voxels),
          x_(lines.voxels.x),
          zs_(lines.z),
          count_(lines.columns)
    {
        const Reals d;
        std::fill_n(held_, kReach, kNone);
        for (std::size_t n = 0; n < count_; n += hn::Lanes(d)) {
            const Neighbours<K> xs(hn::LoadU(d, lines.x + n));
            for (int i = 0; i < kReach; ++i) {
                hn::Store(xs.weights[i], d, weights_[i] + n);
            }
            windows_[n] = SideBySide ? Window<T, K>::find(x_, xs) : Window<T, K>::kNone;
        }
    }

    void operator()(LineSink& sink)
    {
        HWY_ALIGN double samples[kTile];
        for (std::size_t row = 0; row < lines_.rows; ++row) {
            const AxisWeights<K> ys(lines_.y[row]);
            const Neighbour* neighbours[kReach];
            for (int j = 0; j < kReach; ++j) {
                neighbours[j] = expanded(ys.first + j);
            }
            combine(ys.weights, neighbours, samples);
            sink.take(row, samples);
        }
    }

private:
    static constexpr int kReach = reach(K);
    static constexpr std::int64_t kNone = std::int64_t{1} << 40;

    // Of one source row: by slice, then by neighbour, then by column.
    using Neighbour = double[kReach][kTile];

    // A row stays where its index leads until another one needs the place.
    const Neighbour* expanded(int y)
    {
        const int place = y & (kReach - 1);
        if (held_[place] != y) {
            held_[place] = y;
            expand(y, rows_[place]);
        }
        return rows_[place];
    }

    void expand(int y, Neighbour* row)
    {
        const Axis& ys = voxels_.y;
        const Axis& zs = voxels_.z;
        bool isInside[kReach];
        std::int64_t begins[kReach];
        for (int k = 0; k < kReach; ++k) {
            const int z = zs_.first + k;
            isInside[k] = !lines_.outside.isConstant || (ys.holds(y) && zs.holds(z));
            begins[k] = ys.bytes(std::clamp(y, ys.first, ys.last)) +
                        zs.bytes(std::clamp(z, zs.first, zs.last));
        }
        for (std::size_t n = 0; n < count_; n += hn::Lanes(Reals())) {
            expandColumns(isInside, begins, n, row);
        }
    }

    void expandColumns(const bool (&isInside)[kReach], const std::int64_t (&begins)[kReach],
                       std::size_t n, Neighbour* row)
    {
        const Neighbours<K> xs(hn::LoadU(Reals(), lines_.x + n));
        const auto expandFrom = [&](const auto& columns) {
            read(columns, xs, isInside, begins, n, row);
        };
        if (windows_[n] != Window<T, K>::kNone) {
            expandFrom(Window<T, K>(x_, xs, windows_[n]));
        } else {
            expandFrom(Row<T, K, SideBySide>(x_, xs));
        }
    }

    template <class Columns>
    void read(const Columns& columns, const Neighbours<K>& xs, const bool (&isInside)[kReach],
              const std::int64_t (&begins)[kReach], std::size_t n, Neighbour* row)
    {
        const Real constant = real(lines_.outside.value);
        const bool isMasked = lines_.outside.isConstant && !hn::AllTrue(Reals(), xs.allInside(x_));
        for (int k = 0; k < kReach; ++k) {
            Real values[kReach];
            columns.read(voxels_, begins[k], values);
            for (int i = 0; i < kReach; ++i) {
                const Real value = !isInside[k] ? constant
                                   : isMasked
                                       ? hn::IfThenElse(xs.inside(x_, i), values[i], constant)
                                       : values[i];
                hn::Store(value, Reals(), row[k][i] + n);
            }
        }
    }

    void combine(const double (&yWeights)[kReach], const Neighbour* const (&rows)[kReach],
                 double* samples) const
    {
        for (std::size_t n = 0; n < count_; n += hn::Lanes(Reals())) {
            hn::Store(combineColumns(yWeights, rows, n), Reals(), samples + n);
        }
    }

    Real combineColumns(const double (&yWeights)[kReach], const Neighbour* const (&rows)[kReach],
                        std::size_t n) const
    {
        Real planeWeights[kReach][kReach];
        for (int j = 0; j < kReach; ++j) {
            for (int i = 0; i < kReach; ++i) {
                planeWeights[j][i] = hn::Mul(hn::Load(Reals(), weights_[i] + n), real(yWeights[j]));
            }
        }
        Real sumOfWeights = hn::Zero(Reals());
        Real sumOfProducts = hn::Zero(Reals());
        for (int k = 0; k < kReach; ++k) {
            const Real zWeight = real(zs_.weights[k]);
            for (int j = 0; j < kReach; ++j) {
                for (int i = 0; i < kReach; ++i) {
                    const Real weight = hn::Mul(planeWeights[j][i], zWeight);
                    const Real product = hn::Mul(hn::Load(Reals(), rows[j][k][i] + n), weight);
                    // The first product of Linear is the sum so far, whatever its sign.
                    const bool isFirst = K == Kernel::LINEAR && i + j + k == 0;
                    sumOfProducts = isFirst ? product : hn::Add(sumOfProducts, product);
                    if constexpr (K == Kernel::CUBIC) {
                        sumOfWeights = hn::Add(sumOfWeights, weight);
                    }
                }
            }
        }
        return K == Kernel::CUBIC ? hn::Div(sumOfProducts, sumOfWeights) : sumOfProducts;
    }

    const Lines& lines_;
    const Voxels& voxels_;
    const RealAxis x_;
    const AxisWeights<K> zs_;
    const std::size_t count_;
    std::int64_t held_[kReach];
    std::int64_t windows_[kTile];  // at the first column of each vector
    HWY_ALIGN double weights_[kReach][kTile];
    HWY_ALIGN Neighbour rows_[kReach][kReach];
};

template <class T, Kernel K>
void makeLines(const Lines& lines, LineSink& sink)
{
    if (areSideBySide<T>(lines.voxels)) {
        LineMaker<T, K, true> maker(lines);
        maker(sink);
    } else {
        LineMaker<T, K, false> maker(lines);
        maker(sink);
    }
}

template <class T>
void makeLines(const Lines& lines, LineSink& sink)
{
    if (lines.kernel == Kernel::LINEAR) {
        makeLines<T, Kernel::LINEAR>(lines, sink);
    } else {
        makeLines<T, Kernel::CUBIC>(lines, sink);
    }
}

inline void linesOfRows(const Lines& lines, LineSink& sink)
{
    switch (lines.voxels.type) {
        case core::DT_UCHAR:
            return makeLines<unsigned char>(lines, sink);
        case core::DT_SHORT:
            return makeLines<short>(lines, sink);
        case core::DT_USHORT:
            return makeLines<unsigned short>(lines, sink);
        case core::DT_INT:
            return makeLines<int>(lines, sink);
        case core::DT_UINT:
            return makeLines<unsigned int>(lines, sink);
        case core::DT_FLOAT:
            return makeLines<float>(lines, sink);
        case core::DT_DOUBLE:
            return makeLines<double>(lines, sink);
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
