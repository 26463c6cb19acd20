// Lines of samples along the axes, for the instruction set that Highway is compiling.
//
// A row of the source serves many lines. It is expanded once: each neighbour of each column as a
// double, next to that of the next column. What is left of a sample are its products and sums.
#if defined(VOLUX_RESAMPLE_LINES) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_LINES
#undef VOLUX_RESAMPLE_LINES
#else
#define VOLUX_RESAMPLE_LINES
#endif

#include <hwy/highway.h>

#include <algorithm>

#include "Lines.h"
#include "RowReader-inl.h"
#include "exact/ElementTypes.h"
#include "exact/Rules.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

constexpr std::int64_t kNoWindow = -1;

// The neighbours of the columns of a vector, where all of them are among as many contiguous voxels
// as there are lanes: loaded together, and moved to their columns.
template <class T, Kernel K, Order O>
class Window {
public:
    // The lowest in memory of its voxels is the first of them, or the last.
    Window(const RealAxis& axis, Real first, std::int64_t voxel)
        : lowest_(voxel + (kStep < 0 ? kLast : 0))
    {
        const Real lowest(axis.first + static_cast<double>(lowest_));
        for (int i = 0; i < kReach; ++i) {
            lanes_[i] = wholeNumber((axis.within(offset(first, i)) - lowest) * Real(double{kStep}));
        }
    }

    // The first voxel of the window, from the first that the brick holds; kNoWindow if there is
    // none.
    static std::int64_t find(const RealAxis& axis, Real first)
    {
        const Doubles d;
        const Real last = offset(first, kReach - 1);
        const double lowest = hn::GetLane(hn::MinOfLanes(d, axis.within(first).lanes));
        const double highest = hn::GetLane(hn::MaxOfLanes(d, axis.within(last).lanes));
        const double begin = std::min(lowest, axis.last - kLast);
        const bool isThere = begin >= axis.first && highest - begin <= kLast;
        return isThere ? static_cast<std::int64_t>(begin - axis.first) : kNoWindow;
    }

    void read(const Channel& channel, std::int64_t row, Real (&values)[reach(K)]) const
    {
        const unsigned char* const lowest = channel.data + row + kStep * lowest_ * kBytes<T>;
        const auto all = loadVoxels(reinterpret_cast<const T*>(lowest)).lanes;
        for (int i = 0; i < kReach; ++i) {
            values[i] = Real(hn::TableLookupLanes(all, hn::IndicesFromVec(Doubles(), lanes_[i])));
        }
    }

private:
    static constexpr int kReach = reach(K);
    static constexpr int kLast = static_cast<int>(kLanes) - 1;
    static constexpr int kStep = O == Order::BACKWARD ? -1 : 1;

    std::int64_t lowest_;
    Offset lanes_[kReach];
};

// A window for each neighbour, where one does not hold those of all: steps of about a voxel.
template <class T, Kernel K, Order O>
class Windows {
public:
    Windows(const RealAxis& axis, Real first, std::int64_t voxel)
        : lowest_(voxel + (kStep < 0 ? kLast : 0)),
          lanes_(wholeNumber((first - Real(axis.first + static_cast<double>(lowest_))) *
                             Real(double{kStep})))
    {
    }

    // The first voxel of the first window, likewise.
    static std::int64_t find(const RealAxis& axis, Real first)
    {
        const Doubles d;
        const double lowest = hn::GetLane(hn::MinOfLanes(d, first.lanes));
        const double highest = hn::GetLane(hn::MaxOfLanes(d, first.lanes));
        const double begin = std::min(lowest, axis.last - (kLast + kReach - 1));
        const bool areThere = begin >= axis.first && highest - begin <= kLast;
        return areThere ? static_cast<std::int64_t>(begin - axis.first) : kNoWindow;
    }

    void read(const Channel& channel, std::int64_t row, Real (&values)[reach(K)]) const
    {
        const auto lanes = hn::IndicesFromVec(Doubles(), lanes_);
        for (int i = 0; i < kReach; ++i) {
            const unsigned char* const lowest =
                channel.data + row + kStep * (lowest_ + i) * kBytes<T>;
            const auto all = loadVoxels(reinterpret_cast<const T*>(lowest)).lanes;
            values[i] = Real(hn::TableLookupLanes(all, lanes));
        }
    }

private:
    static constexpr int kReach = reach(K);
    static constexpr int kLast = static_cast<int>(kLanes) - 1;
    static constexpr int kStep = O == Order::BACKWARD ? -1 : 1;

    std::int64_t lowest_;
    Offset lanes_;
};

// Where a load and an earlier store agree in the lowest bits of their addresses, processors may let
// one wait for the other. Aligned alike, they agree where both are of the same column.
constexpr std::size_t kAlike = kTile * sizeof(double);

template <class T, Kernel K, Order O, class Made = Summed<T, K>>
class alignas(kAlike) LineReader {
public:
    explicit LineReader(const Lines& lines)
        : lines_(lines), channel_(lines.channel), x_(lines.channel.x), zs_(lines.z)
    {
        std::fill_n(held_, kReach, kNone);
        forEachVector([&](std::size_t n) {
            const Neighbours<K, Real> xs(load(lines_.x + n));
            for (int i = 0; i < kReach; ++i) {
                store(xs.weights[i], weights_[i] + n);
            }
            const bool isApart = O == Order::APART;
            windows_[n] = isApart ? kNoWindow : Shared::find(x_, xs.first);
            splits_[n] =
                isApart || windows_[n] != kNoWindow ? kNoWindow : Split::find(x_, xs.first);
        });
    }

    HWY_NOINLINE void operator()(LineSink& sink)
    {
        alignas(kAlike) double readings[kTile];
        const std::size_t columns = lines_.columns;
        for (std::size_t line = 0; line < lines_.lines; ++line) {
            const exact::Neighbours<K, double> ys(lines_.y[line]);
            const Expanded* rows[kReach];
            for (int j = 0; j < kReach; ++j) {
                rows[j] = expanded(ys.first + j);
            }
            // Without vectors of its own, a compiler makes them of a loop as plain as this.
            for (std::size_t n = 0; n < columns; n += kLanes) {
                store(sum(lines_.y[line], ys.weights, rows, n), readings + n);
            }
            sink.take(line, readings);
        }
    }

private:
    static constexpr int kReach = reach(K);
    static constexpr std::int64_t kNone = std::int64_t{1} << 40;
    static constexpr int kPitch{kTile};  // from one neighbour of a column to the next

    using Shared = Window<T, K, O>;
    using Split = Windows<T, K, O>;

    // One source row: by slice, then by neighbour, then by column.
    using Expanded = double[kReach][kTile];

    template <class Step>
    void forEachVector(const Step& step) const
    {
        for (std::size_t n = 0; n < lines_.columns; n += kLanes) {
            step(n);
        }
    }

    // A row stays where its index leads until another one needs the place.
    const Expanded* expanded(int y)
    {
        const int place = y & (kReach - 1);
        if (held_[place] != y) {
            held_[place] = y;
            expand(y, rows_[place]);
        }
        return rows_[place];
    }

    HWY_NOINLINE void expand(int y, Expanded* row) const
    {
        const Axis& ys = channel_.y;
        const Axis& zs = channel_.z;
        bool isInside[kReach];
        std::int64_t begins[kReach];
        for (int k = 0; k < kReach; ++k) {
            const int z = zs_.first + k;
            isInside[k] = !lines_.outside.isConstant || (ys.holds(y) && zs.holds(z));
            begins[k] = ys.bytes(ys.within(y)) + zs.bytes(zs.within(z));
        }
        forEachVector([&](std::size_t n) {
            const Real first = firstNeighbour<K>(load(lines_.x + n));
            if (windows_[n] != kNoWindow) {
                read(Shared(x_, first, windows_[n]), first, isInside, begins, n, row);
            } else if (splits_[n] != kNoWindow) {
                read(Split(x_, first, splits_[n]), first, isInside, begins, n, row);
            } else {
                read(RowReader<T, K, O == Order::FORWARD>(x_, first), first, isInside, begins, n,
                     row);
            }
        });
    }

    template <class Reader>
    void read(const Reader& reader, Real first, const bool (&isInside)[kReach],
              const std::int64_t (&begins)[kReach], std::size_t n, Expanded* row) const
    {
        const Real constant(lines_.outside.value);
        const bool isMasked = lines_.outside.isConstant && !allTrue(allInside<K>(x_, first));
        for (int k = 0; k < kReach; ++k) {
            Real values[kReach];
            reader.read(channel_, begins[k], values);
            for (int i = 0; i < kReach; ++i) {
                const Real value = !isInside[k] ? constant
                                   : isMasked
                                       ? select(x_.holds(offset(first, i)), values[i], constant)
                                       : values[i];
                store(value, row[k][i] + n);
            }
        }
    }

    Real sum(double y, const double (&yWeights)[kReach], const Expanded* const (&rows)[kReach],
             std::size_t n) const
    {
        Real xWeights[kReach];
        for (int i = 0; i < kReach; ++i) {
            xWeights[i] = load(weights_[i] + n);
        }
        // One pointer for each row: a compiler would take one for each neighbour.
        const double* firsts[kReach];
        for (int j = 0; j < kReach; ++j) {
            firsts[j] = rows[j][0][0] + n;
        }
        const auto row = [&](int j, int k) {
            return [first = firsts[j] + k * kReach * kPitch](int i) {
                return load(first + i * kPitch);
            };
        };
        return Made::of(xWeights, yWeights, zs_.weights, row,
                        {load(lines_.x + n), Real(y), Real(lines_.z)});
    }

    HWY_ALIGN Expanded rows_[kReach][kReach];
    HWY_ALIGN double weights_[kReach][kTile];
    const Lines& lines_;
    const Channel& channel_;
    const RealAxis x_;
    const exact::Neighbours<K, double> zs_;
    std::int64_t held_[kReach];
    std::int64_t windows_[kTile];  // at the first column of each vector
    std::int64_t splits_[kTile];   // likewise, where one window is not enough
};

template <class T, Kernel K>
void readLinesWith(const Lines& lines, LineSink& sink)
{
    withOrder<T>(lines.channel, [&](auto order) {
        LineReader<T, K, decltype(order)::value> reader(lines);
        reader(sink);
    });
}

inline void readLinesHere(const Lines& lines, LineSink& sink)
{
    exact::withElementType(lines.channel.type, [&](auto element) {
        using T = typename decltype(element)::Type;
        if (lines.kernel == Kernel::LINEAR) {
            readLinesWith<T, Kernel::LINEAR>(lines, sink);
        } else {
            readLinesWith<T, Kernel::CUBIC>(lines, sink);
        }
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
