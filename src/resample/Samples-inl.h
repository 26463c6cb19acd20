// The kernels, one sample in each lane, for the instruction set that Highway is compiling.
//
// Each lane does what sampleOne() does, in its order; no sum crosses lanes. A vector that holds a
// position far from any image is left to sampleOne(), which knows how 32-bit indices wrap.
#if defined(VOLUX_RESAMPLE_SAMPLES) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_SAMPLES
#undef VOLUX_RESAMPLE_SAMPLES
#else
#define VOLUX_RESAMPLE_SAMPLES
#endif

#include <hwy/highway.h>

#include <algorithm>

#include "Blocks.h"
#include "Exact.h"
#include "Vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

inline Real lowerVoxels(Real position)
{
    const Real whole = hn::Trunc(position);
    const Mask below = hn::Not(hn::Ge(position, hn::Zero(Reals())));
    // The zero that is added makes -0.0 the 0.0 that an integer index is.
    return hn::Sub(hn::Add(whole, hn::Zero(Reals())), hn::IfThenElseZero(below, real(1.0)));
}

inline Real innerCubicWeights(Real d)
{
    const Real d2 = hn::Mul(d, d);
    return hn::Add(hn::Sub(real(1.0), hn::Mul(d2, real(2.5))), hn::Mul(hn::Mul(d2, real(1.5)), d));
}

inline Real outerCubicWeights(Real d)
{
    const Real d2 = hn::Mul(d, d);
    const Real sum = hn::Sub(hn::Sub(hn::Mul(d, real(8.0)), real(4.0)), hn::Mul(d2, real(5.0)));
    return hn::Mul(hn::Add(sum, hn::Mul(d2, d)), real(-0.5));
}

template <Kernel K>
inline Real firstNeighbours(Real position)
{
    if constexpr (K == Kernel::NEAREST) {
        return lowerVoxels(hn::Add(position, real(0.5)));
    } else if constexpr (K == Kernel::LINEAR) {
        return lowerVoxels(position);
    } else {
        return hn::Sub(lowerVoxels(position), real(1.0));
    }
}

template <Kernel K>
inline void weigh(Real position, Real first, Real* weights)
{
    if constexpr (K == Kernel::LINEAR) {
        weights[1] = hn::Sub(position, first);
        weights[0] = hn::Sub(real(1.0), weights[1]);
    } else if constexpr (K == Kernel::CUBIC) {
        weights[0] = outerCubicWeights(hn::Sub(position, first));
        weights[1] = innerCubicWeights(hn::Sub(position, hn::Add(first, real(1.0))));
        weights[2] = innerCubicWeights(hn::Sub(hn::Add(first, real(2.0)), position));
        weights[3] = outerCubicWeights(hn::Sub(hn::Add(first, real(3.0)), position));
    }
}

inline Real clamped(Real index, double first, double last)
{
    return hn::Min(hn::Max(index, real(first)), real(last));
}

// An axis in the numbers that vectors are compared with, for which a vector need not wait.
struct RealAxis {
    double first;
    double last;
    double lastVoxel;  // of the whole source
    double stride;

    explicit RealAxis(const Axis& axis)
        : first(axis.first),
          last(axis.last),
          lastVoxel(axis.extent - 1.0),
          stride(static_cast<double>(axis.stride))
    {
    }
};

// The neighbours along one axis. Clamping to what the brick holds keeps every read inside it; a
// neighbour that Constant replaces may read any of its voxels.
template <Kernel K>
struct Neighbours {
    static constexpr int kReach = reach(K);

    Real first;
    Real weights[kReach];

    explicit Neighbours(Real position) : first(firstNeighbours<K>(position))
    {
        weigh<K>(position, first, weights);
    }

    Real at(int n) const { return hn::Add(first, real(n)); }

    Real within(const RealAxis& axis, int n) const { return clamped(at(n), axis.first, axis.last); }

    Mask inside(const RealAxis& axis, int n) const
    {
        return hn::And(hn::Ge(at(n), hn::Zero(Reals())), hn::Le(at(n), real(axis.lastVoxel)));
    }

    Mask allInside(const RealAxis& axis) const
    {
        return hn::And(hn::Ge(first, hn::Zero(Reals())),
                       hn::Le(at(kReach - 1), real(axis.lastVoxel)));
    }

    Offset bytes(const RealAxis& axis, int n) const
    {
        const Real steps = hn::Sub(within(axis, n), real(axis.first));
        return wholeNumber(hn::Mul(steps, real(axis.stride)));
    }
};

// Where along a row of voxels the neighbours are found: a word for several of them where they lie
// side by side, and how far each one's bits are from the lowest.
template <class T, Kernel K, bool SideBySide>
struct Row {
    static constexpr int kReach = reach(K);
    static constexpr int kHeld = SideBySide ? static_cast<int>(kWordBytes / sizeof(T)) : 1;
    static constexpr int kWords = (kReach + kHeld - 1) / kHeld;

    Offset offsets[kWords];
    Word shifts[kReach];

    Row(const RealAxis& axis, const Neighbours<K>& xs)
    {
        for (int w = 0; w < kWords; ++w) {
            if constexpr (SideBySide) {
                const Real first = clamped(xs.at(w * kHeld), axis.first, axis.last - (kHeld - 1));
                offsets[w] =
                    wholeNumber(hn::Mul(hn::Sub(first, real(axis.first)), real(double{sizeof(T)})));
                for (int i = w * kHeld; i < kReach && i < (w + 1) * kHeld; ++i) {
                    const Real bits =
                        hn::Mul(hn::Sub(xs.within(axis, i), first), real(8.0 * double{sizeof(T)}));
                    shifts[i] = hn::BitCast(Words(), wholeNumber(bits));
                }
            } else {
                // A word that would pass the end of the row begins earlier.
                const double lastWord =
                    axis.stride * (axis.last - axis.first) + double{sizeof(T)} - double{kWordBytes};
                const Real wanted =
                    hn::Mul(hn::Sub(xs.within(axis, w), real(axis.first)), real(axis.stride));
                const Real begin = hn::Min(wanted, real(lastWord));
                offsets[w] = wholeNumber(begin);
                shifts[w] =
                    hn::BitCast(Words(), wholeNumber(hn::Mul(hn::Sub(wanted, begin), real(8.0))));
            }
        }
    }

    void read(const Voxels& voxels, std::int64_t row, Real (&values)[kReach]) const
    {
        read(voxels, hn::Set(Offsets(), row), values);
    }

    // The neighbours of one row, whose first voxel lies at the offsets.
    void read(const Voxels& voxels, Offset row, Real (&values)[kReach]) const
    {
        for (int w = 0; w < kWords; ++w) {
            const Offset wanted = hn::Add(row, offsets[w]);
            if constexpr (sizeof(T) == kWordBytes) {
                values[w] = fromLowest<T>(gatherWords(voxels.data, wanted));
            } else if constexpr (SideBySide) {
                const Word words = gatherWords(voxels.data, wanted);
                for (int i = w * kHeld; i < kReach && i < (w + 1) * kHeld; ++i) {
                    values[i] = fromLowest<T>(hn::Shr(words, shifts[i]));
                }
            } else {
                values[w] = fromLowest<T>(hn::Shr(gatherWords(voxels.data, wanted), shifts[w]));
            }
        }
    }
};

template <class T, Kernel K, bool SideBySide>
class Sampler {
public:
    Sampler(const Voxels& voxels, const Outside& outside)
        : voxels_(voxels), outside_(outside), x_(voxels.x), y_(voxels.y), z_(voxels.z)
    {
    }

    Real operator()(Real x, Real y, Real z) const
    {
        const Neighbours<K> xs(x);
        const Neighbours<K> ys(y);
        const Neighbours<K> zs(z);
        if (outside_.isConstant &&
            !hn::AllTrue(Reals(),
                         hn::And(hn::And(xs.allInside(x_), ys.allInside(y_)), zs.allInside(z_)))) {
            return sum<true>(xs, ys, zs);
        }
        return sum<false>(xs, ys, zs);
    }

private:
    static constexpr int kReach = reach(K);

    template <bool Masked>
    Real orConstant(Mask inside, Real value) const
    {
        return Masked ? hn::IfThenElse(inside, value, real(outside_.value)) : value;
    }

    template <bool Masked>
    Real sum(const Neighbours<K>& xs, const Neighbours<K>& ys, const Neighbours<K>& zs) const
    {
        const Row<T, K, SideBySide> row(x_, xs);
        Mask xInside[kReach];
        for (int i = 0; i < kReach; ++i) {
            xInside[i] = xs.inside(x_, i);
        }
        Real sumOfWeights = hn::Zero(Reals());
        Real sumOfProducts = hn::Zero(Reals());
        for (int k = 0; k < kReach; ++k) {
            const Offset slice = zs.bytes(z_, k);
            const Mask zInside = zs.inside(z_, k);
            for (int j = 0; j < kReach; ++j) {
                Real values[kReach];
                row.read(voxels_, hn::Add(slice, ys.bytes(y_, j)), values);
                const Mask rowInside = hn::And(zInside, ys.inside(y_, j));
                for (int i = 0; i < kReach; ++i) {
                    const Real value =
                        orConstant<Masked>(hn::And(rowInside, xInside[i]), values[i]);
                    if constexpr (K == Kernel::NEAREST) {
                        return value;
                    }
                    const Real weight =
                        hn::Mul(hn::Mul(xs.weights[i], ys.weights[j]), zs.weights[k]);
                    const Real product = hn::Mul(value, weight);
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

    const Voxels& voxels_;
    const Outside& outside_;
    const RealAxis x_;
    const RealAxis y_;
    const RealAxis z_;
};

// Where indices need no care in 32 bits; NaN is not near.
inline bool allNear(Real x, Real y, Real z)
{
    const Real limit = real(0x1p30);
    const auto near = [&](Real position) { return hn::Le(hn::Abs(position), limit); };
    return hn::AllTrue(Reals(), hn::And(hn::And(near(x), near(y)), near(z)));
}

template <class T, Kernel K>
void samplesOneByOne(const Voxels& voxels, const Outside& outside, Block& block, std::size_t first,
                     std::size_t end)
{
    for (std::size_t n = first; n < end; ++n) {
        block.samples[n] = sampleOne<T, K>(voxels, outside, block.x[n], block.y[n], block.z[n]);
    }
}

template <class T, Kernel K, bool SideBySide>
void samplesOf(const Voxels& voxels, const Outside& outside, Block& block)
{
    const Reals d;
    const Sampler<T, K, SideBySide> sampler(voxels, outside);
    for (std::size_t n = 0; n < block.count; n += hn::Lanes(d)) {
        const Real x = hn::Load(d, block.x + n);
        const Real y = hn::Load(d, block.y + n);
        const Real z = hn::Load(d, block.z + n);
        if (HWY_LIKELY(allNear(x, y, z))) {
            hn::Store(sampler(x, y, z), d, block.samples + n);
        } else {
            samplesOneByOne<T, K>(voxels, outside, block, n,
                                  std::min(n + hn::Lanes(d), block.count));
        }
    }
}

template <class T>
inline bool areSideBySide(const Voxels& voxels)
{
    return voxels.x.stride == static_cast<std::int64_t>(sizeof(T));
}

template <class T, Kernel K>
void samplesOf(const Voxels& voxels, const Outside& outside, Block& block)
{
    // One lane is slower than no lanes at all.
    if (!haveWords(voxels, sizeof(T)) || HWY_TARGET == HWY_SCALAR) {
        samplesOneByOne<T, K>(voxels, outside, block, 0, block.count);
    } else if (areSideBySide<T>(voxels)) {
        samplesOf<T, K, true>(voxels, outside, block);
    } else {
        samplesOf<T, K, false>(voxels, outside, block);
    }
}

template <class T>
void samplesOf(const Voxels& voxels, Kernel kernel, const Outside& outside, Block& block)
{
    switch (kernel) {
        case Kernel::NEAREST:
            return samplesOf<T, Kernel::NEAREST>(voxels, outside, block);
        case Kernel::LINEAR:
            return samplesOf<T, Kernel::LINEAR>(voxels, outside, block);
        case Kernel::CUBIC:
            return samplesOf<T, Kernel::CUBIC>(voxels, outside, block);
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
