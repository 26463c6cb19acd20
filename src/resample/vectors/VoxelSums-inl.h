// Sums of blocks of voxels, for the instruction set that Highway is compiling. A compiler makes
// vectors of most of these loops.
#if defined(VOLUX_RESAMPLE_VOXEL_SUMS) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_VOXEL_SUMS
#undef VOLUX_RESAMPLE_VOXEL_SUMS
#else
#define VOLUX_RESAMPLE_VOXEL_SUMS
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "Block.h"
#include "Lanes-inl.h"
#include "VoxelSums.h"
#include "exact/ElementTypes.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

// Blocks that are summed together: their sums stay in the nearest cache.
constexpr std::size_t kTogether = 1024;

// A row of voxels. Contiguous ones are addressed without a product.
template <class T, bool Contiguous>
struct VoxelRow {
    const T* first;
    std::ptrdiff_t stride;  // in elements

    T operator[](std::size_t n) const
    {
        return first[Contiguous ? static_cast<std::ptrdiff_t>(n)
                                : stride * static_cast<std::ptrdiff_t>(n)];
    }
};

template <class T, bool Contiguous>
VoxelRow<T, Contiguous> rowOf(const VoxelBlocks& blocks, std::size_t y, std::size_t z)
{
    const auto offset = blocks.strideY * static_cast<std::int64_t>(y) +
                        blocks.strideZ * static_cast<std::int64_t>(z);
    return {reinterpret_cast<const T*>(blocks.first + static_cast<std::ptrdiff_t>(offset)),
            static_cast<std::ptrdiff_t>(blocks.strideX) / static_cast<std::ptrdiff_t>(sizeof(T))};
}

template <class T, bool Contiguous, class Visit>
void forEachRow(const VoxelBlocks& blocks, const Visit& visit)
{
    for (std::size_t z = 0; z < blocks.depth; ++z) {
        for (std::size_t y = 0; y < blocks.height; ++y) {
            visit(rowOf<T, Contiguous>(blocks, y, z));
        }
    }
}

// No sum of integers rounds, so their order does not matter: rows first, then columns.
template <class T>
class IntegerSums {
public:
    explicit IntegerSums(const VoxelBlocks& blocks)
        : width_(blocks.width), columns_(blocks.width * blocks.count)
    {
        std::fill_n(sums_, columns_, Sum{0});
    }

    template <bool Contiguous>
    void add(const VoxelRow<T, Contiguous>& row)
    {
        for (std::size_t n = 0; n < columns_; ++n) {
            sums_[n] += row[n];
        }
    }

    double mean(std::size_t block, double number) const
    {
        std::int64_t sum = 0;
        for (std::size_t n = block * width_; n < (block + 1) * width_; ++n) {
            sum += sums_[n];
        }
        return static_cast<double>(sum) / number;
    }

private:
    using Sum = std::conditional_t<sizeof(T) <= 2, std::int32_t, std::int64_t>;

    std::size_t width_;
    std::size_t columns_;
    Sum sums_[kTogether];
};

#if HWY_TARGET != HWY_SCALAR

// Voxel n of each of a vector of blocks of N contiguous voxels.
template <int N, class D, class T>
HWY_INLINE void loadBlocks(D d, const T* voxels, hn::Vec<D> (&columns)[N])
{
    if constexpr (N == 2) {
        hn::LoadInterleaved2(d, voxels, columns[0], columns[1]);
    } else if constexpr (N == 3) {
        hn::LoadInterleaved3(d, voxels, columns[0], columns[1], columns[2]);
    } else if constexpr (N == 4) {
        hn::LoadInterleaved4(d, voxels, columns[0], columns[1], columns[2], columns[3]);
    } else {
        constexpr int kHalf = N / 2;
        hn::Vec<D> first[kHalf];
        hn::Vec<D> second[kHalf];
        loadBlocks(d, voxels, first);
        loadBlocks(d, voxels + kHalf * kLanes, second);
        for (int n = 0; n < kHalf; ++n) {
            columns[n] = hn::ConcatEven(d, second[n], first[n]);
            columns[n + kHalf] = hn::ConcatOdd(d, second[n], first[n]);
        }
    }
}

#endif

// Sums of floats and doubles, in the order of the voxels.
template <class T>
class RealSums {
public:
    explicit RealSums(const VoxelBlocks& blocks) : width_(blocks.width), count_(blocks.count)
    {
        std::fill_n(sums_, count_, -0.0);  // to which the first is added without a change
    }

    template <bool Contiguous>
    void add(const VoxelRow<T, Contiguous>& row)
    {
        switch (Contiguous ? width_ : 0) {
            case 2:
                return addBlocks<2>(row.first);
            case 3:
                return addBlocks<3>(row.first);
            case 4:
                return addBlocks<4>(row.first);
            case 6:
                return addBlocks<6>(row.first);
            case 8:
                return addBlocks<8>(row.first);
            default:
                return addFrom(0, row, width_);
        }
    }

    double mean(std::size_t block, double number) const { return sums_[block] / number; }

private:
    // As many blocks at once as there are lanes.
    template <int N>
    void addBlocks(const T* row)
    {
        std::size_t block = 0;
#if HWY_TARGET != HWY_SCALAR
        const hn::Rebind<T, Doubles> d;
        hn::Vec<decltype(d)> columns[N];
        for (; block + kLanes <= count_; block += kLanes) {
            loadBlocks(d, row + block * N, columns);
            Real sum = load(sums_ + block);
            for (const auto& column : columns) {
                sum = sum + widened(column);
            }
            store(sum, sums_ + block);
        }
#endif
        addFrom(block, VoxelRow<T, true>{row, 1}, std::integral_constant<std::size_t, N>());
    }
#if HWY_TARGET != HWY_SCALAR
    template <class V>
    static HWY_INLINE Real widened(V voxels)
    {
        if constexpr (std::is_same_v<T, double>) {
            return Real(voxels);
        } else {
            return Real(hn::PromoteTo(Doubles(), voxels));
        }
    }
#endif

    // A width that is a constant lets a compiler unroll the inner loop.
    template <bool Contiguous, class Width>
    void addFrom(std::size_t block, const VoxelRow<T, Contiguous>& row, Width width)
    {
        for (; block < count_; ++block) {
            double sum = sums_[block];
            for (std::size_t n = 0; n < width; ++n) {
                sum += double{row[block * width + n]};
            }
            sums_[block] = sum;
        }
    }

    std::size_t width_;
    std::size_t count_;
    double sums_[kBlock];
};

// The least and the greatest voxel of each block: rows first, then columns.
class Extremes {
public:
    explicit Extremes(const VoxelBlocks& blocks)
        : width_(blocks.width), columns_(blocks.width * blocks.count)
    {
        std::fill_n(least_, columns_, std::numeric_limits<double>::infinity());
        std::fill_n(greatest_, columns_, -std::numeric_limits<double>::infinity());
    }

    // Whatever becomes of a NaN here: the mean is NaN then, and compares with neither.
    template <bool Contiguous>
    void add(const VoxelRow<double, Contiguous>& row)
    {
        for (std::size_t n = 0; n < columns_; ++n) {
            const double voxel = row[n];
            least_[n] = voxel < least_[n] ? voxel : least_[n];
            greatest_[n] = voxel > greatest_[n] ? voxel : greatest_[n];
        }
    }

    double clamped(double mean, std::size_t block) const
    {
        const std::size_t first = block * width_;
        const double least = *std::min_element(least_ + first, least_ + first + width_);
        const double greatest = *std::max_element(greatest_ + first, greatest_ + first + width_);
        return mean < least ? least : mean > greatest ? greatest : mean;
    }

private:
    std::size_t width_;
    std::size_t columns_;
    double least_[kTogether];
    double greatest_[kTogether];
};

// Whether rounding may have moved a mean of doubles beyond their least or greatest: not where the
// mean is a voxel, and only where it hardly differs from any. In n voxels up to M in size the sum's
// error moves the mean by at most n * 2^-53 * M. The exact mean is at least 1/n of the range away
// from both ends, so to leave the range it must be narrower than n * n * 2^-53 * M, and then no
// voxel differs more than that from the mean, which nearly is M. Infinite means and NaN do not
// compare.
template <bool Contiguous>
bool mayLeave(const double* means, std::size_t count, const VoxelRow<double, Contiguous>& row,
              std::size_t width, double number)
{
    constexpr double kRounding = 0x1p-50;
    const double narrow = number * number * kRounding;
    bool mayAny = false;
    for (std::size_t n = 0; n < count; ++n) {
        const double first = row[n * width];
        const double distance = std::abs(means[n] - first);
        mayAny |= !(distance > narrow * std::abs(means[n]) || means[n] == first);
    }
    return mayAny;
}

// Sums of floats are rounded, but their means stay among them: so few multiples of a float are
// doubles, and rounding keeps the order.
template <class T, bool Contiguous>
void keepAmongVoxels(const VoxelBlocks& blocks, double number, double* means)
{
    if constexpr (std::is_same_v<T, double>) {
        if (mayLeave(means, blocks.count, rowOf<T, Contiguous>(blocks, 0, 0), blocks.width,
                     number)) {
            Extremes extremes(blocks);
            forEachRow<T, Contiguous>(blocks, [&](const auto& row) { extremes.add(row); });
            for (std::size_t n = 0; n < blocks.count; ++n) {
                means[n] = extremes.clamped(means[n], n);
            }
        }
    }
}

template <class T>
using SumsOf = std::conditional_t<std::is_integral_v<T>, IntegerSums<T>, RealSums<T>>;

template <class T, bool Contiguous>
void findMeansOf(VoxelBlocks blocks, double* means)
{
    const auto number = static_cast<double>(blocks.width * blocks.height * blocks.depth);
    const std::size_t left = blocks.count;
    for (std::size_t first = 0; first < left; first += blocks.count) {
        blocks.count = std::min(left - first, kTogether / blocks.width);
        SumsOf<T> sums(blocks);
        forEachRow<T, Contiguous>(blocks, [&](const auto& row) { sums.add(row); });
        for (std::size_t n = 0; n < blocks.count; ++n) {
            means[first + n] = sums.mean(n, number);
        }
        keepAmongVoxels<T, Contiguous>(blocks, number, means + first);
        blocks.first += static_cast<std::ptrdiff_t>(
            blocks.strideX * static_cast<std::int64_t>(blocks.count * blocks.width));
    }
}

template <class T, bool Contiguous>
bool areFiniteIn(const VoxelBlocks& blocks)
{
    using Bits = std::conditional_t<sizeof(T) == sizeof(float), std::uint32_t, std::uint64_t>;
    constexpr Bits kExponent =
        sizeof(T) == sizeof(float) ? Bits{0xFFU} << 23U : static_cast<Bits>(0x7FFULL << 52U);
    bool areAll = true;
    forEachRow<T, Contiguous>(blocks, [&](const auto& row) {
        Bits odd = 0;
        const std::size_t voxels = blocks.width * blocks.count;
        for (std::size_t n = 0; n < voxels; ++n) {
            const T voxel = row[n];
            Bits bits = 0;
            std::memcpy(&bits, &voxel, sizeof bits);
            odd |= static_cast<Bits>((bits & kExponent) == kExponent ? 1 : 0);
        }
        areAll = areAll && odd == 0;
    });
    return areAll;
}

// No early end: a compiler makes vectors of it then.
inline bool arePlainHere(const double* means, std::size_t count)
{
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63U;
    constexpr std::uint64_t kExponent = std::uint64_t{0x7FF} << 52U;
    std::uint64_t odd = 0;
    for (std::size_t n = 0; n < count; ++n) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, means + n, sizeof bits);
        odd |= static_cast<std::uint64_t>(bits == kSign);
        odd |= static_cast<std::uint64_t>((bits & kExponent) == kExponent);
    }
    return odd == 0;
}

// Calls `function` with the element type, and with whether voxels are contiguous.
template <class Function>
auto withVoxels(const VoxelBlocks& blocks, const Function& function)
{
    return exact::withElementType(blocks.type, [&](auto element) {
        using T = typename decltype(element)::Type;
        return blocks.strideX == static_cast<std::int64_t>(sizeof(T))
                   ? function(element, std::true_type())
                   : function(element, std::false_type());
    });
}

inline void findMeansHere(const VoxelBlocks& blocks, double* means)
{
    withVoxels(blocks, [&](auto element, auto contiguous) {
        findMeansOf<typename decltype(element)::Type, contiguous>(blocks, means);
    });
}

inline bool areFiniteHere(const VoxelBlocks& blocks)
{
    return withVoxels(blocks, [&](auto element, auto contiguous) {
        using T = typename decltype(element)::Type;
        if constexpr (std::is_integral_v<T>) {
            return true;
        } else {
            return areFiniteIn<T, contiguous>(blocks);
        }
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
