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

template <class T, bool Contiguous, class Visit>
void forEachRow(const VoxelBlocks& blocks, const Visit& visit)
{
    const auto stride =
        static_cast<std::ptrdiff_t>(blocks.strideX) / static_cast<std::ptrdiff_t>(sizeof(T));
    for (std::size_t z = 0; z < blocks.depth; ++z) {
        for (std::size_t y = 0; y < blocks.height; ++y) {
            const auto offset = blocks.strideY * static_cast<std::int64_t>(y) +
                                blocks.strideZ * static_cast<std::int64_t>(z);
            visit(VoxelRow<T, Contiguous>{
                reinterpret_cast<const T*>(blocks.first + static_cast<std::ptrdiff_t>(offset)),
                stride});
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

// Sums of floats are rounded, but none leaves its voxels: so few multiples of a float are doubles,
// and rounding keeps the order.
template <class T>
class RealSums {
public:
    explicit RealSums(const VoxelBlocks& blocks) : width_(blocks.width), count_(blocks.count)
    {
        std::fill_n(sums_, count_, -0.0);  // to which the first is added without a change
        if constexpr (kRounds) {
            std::fill_n(least_, count_, std::numeric_limits<double>::infinity());
            std::fill_n(greatest_, count_, -std::numeric_limits<double>::infinity());
        }
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

    double mean(std::size_t block, double number) const
    {
        const double mean = sums_[block] / number;
        if constexpr (kRounds) {
            return mean < least_[block]      ? least_[block]
                   : mean > greatest_[block] ? greatest_[block]
                                             : mean;
        }
        return mean;
    }

private:
    static constexpr bool kRounds = std::is_same_v<T, double>;

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
            if constexpr (kRounds) {
                widen(columns, block);
            }
        }
#endif
        addFrom(block, VoxelRow<T, true>{row, 1}, std::integral_constant<std::size_t, N>());
    }
#if HWY_TARGET != HWY_SCALAR
    template <class V>
    static HWY_INLINE Real widened(V voxels)
    {
        if constexpr (kRounds) {
            return Real(voxels);
        } else {
            return Real(hn::PromoteTo(Doubles(), voxels));
        }
    }

    // Whatever becomes of a NaN here: the mean is NaN then, and compares with neither.
    template <class V, int N>
    HWY_INLINE void widen(const V (&columns)[N], std::size_t block)
    {
        auto least = load(least_ + block).lanes;
        auto greatest = load(greatest_ + block).lanes;
        for (const V& column : columns) {
            least = hn::Min(column, least);
            greatest = hn::Max(column, greatest);
        }
        store(Real(least), least_ + block);
        store(Real(greatest), greatest_ + block);
    }
#endif

    // A width that is a constant lets a compiler unroll the inner loop.
    template <bool Contiguous, class Width>
    void addFrom(std::size_t block, const VoxelRow<T, Contiguous>& row, Width width)
    {
        for (; block < count_; ++block) {
            double sum = sums_[block];
            for (std::size_t n = 0; n < width; ++n) {
                const double voxel{row[block * width + n]};
                sum += voxel;
                if constexpr (kRounds) {
                    least_[block] = voxel < least_[block] ? voxel : least_[block];
                    greatest_[block] = voxel > greatest_[block] ? voxel : greatest_[block];
                }
            }
            sums_[block] = sum;
        }
    }

    std::size_t width_;
    std::size_t count_;
    double sums_[kBlock];
    double least_[kRounds ? kBlock : 1];
    double greatest_[kRounds ? kBlock : 1];
};

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
