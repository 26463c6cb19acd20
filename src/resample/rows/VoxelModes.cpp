#include "VoxelModes.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <optional>
#include <type_traits>

#include "Votes.h"
#include "exact/ElementTypes.h"
#include "resample/vectors/Channel.h"

namespace volux::resample::detail {

namespace {

// Columns that are counted together, in plain loops of which compilers make vectors.
constexpr std::size_t kTogether = 512;
static_assert(kMostAlong <= kTogether);

template <class T>
class Modes {
public:
    explicit Modes(const VoxelBlocks& blocks) : blocks_(blocks) {}

    void operator()(const unsigned char* const* nearest, double* modes)
    {
        const std::size_t together = kTogether / blocks_.width;
        for (std::size_t first = 0; first < blocks_.count; first += together) {
            find(first, std::min(together, blocks_.count - first), nearest, modes);
        }
    }

private:
    // Most blocks have one label, or more than half of the nearest voxel's or of the first one's.
    void find(std::size_t first, std::size_t count, const unsigned char* const* nearest,
              double* modes)
    {
        T labels[kTogether];
        bool isFound[kTogether] = {};
        for (std::size_t n = 0; n < count; ++n) {
            std::memcpy(labels + n, nearest[first + n], sizeof(T));
        }
        bool areFound = findMajorities(first, count, labels, isFound, modes + first);
        if (!areFound) {
            for (std::size_t n = 0; n < count; ++n) {
                labels[n] = *load(0, (first + n) * blocks_.width, 1);
            }
            areFound = findMajorities(first, count, labels, isFound, modes + first);
        }
        for (std::size_t n = 0; !areFound && n < count; ++n) {
            if (!isFound[n]) {
                modes[first + n] = counted(first + n, elementAt<T>(nearest[first + n]));
            }
        }
    }

    // Finds each block that has more than half of a label. Whether all are found now.
    bool findMajorities(std::size_t first, std::size_t count, const T* labels, bool* isFound,
                        double* modes)
    {
        const std::size_t width = blocks_.width;
        const std::size_t rows = blocks_.height * blocks_.depth;
        unsigned short matches[kTogether] = {};
        for (std::size_t n = 0; n < count; ++n) {
            std::fill_n(leaders_ + n * width, width, labels[n]);
        }
        for (std::size_t row = 0; row < rows; ++row) {
            const T* const voxels = load(row, first * width, count * width);
            for (std::size_t n = 0; n < count * width; ++n) {
                matches[n] = static_cast<unsigned short>(matches[n] + (voxels[n] == leaders_[n]));
            }
        }
        bool areFound = true;
        for (std::size_t n = 0; n < count; ++n) {
            const std::size_t votes =
                std::accumulate(matches + n * width, matches + (n + 1) * width, std::size_t{0});
            if (!isFound[n] && 2 * votes > width * rows) {
                isFound[n] = true;
                modes[n] = asFirst(first + n, labels[n]);
            }
            areFound = areFound && isFound[n];
        }
        return areFound;
    }

    // A label of a block as its first voxel with it has it, which tells 0.0 from -0.0.
    double asFirst(std::size_t block, T label)
    {
        for (std::size_t row = 0; label == T{0} && std::is_floating_point_v<T>; ++row) {
            const T* const voxels = load(row, block * blocks_.width, blocks_.width);
            const T* const found = std::find(voxels, voxels + blocks_.width, label);
            if (found != voxels + blocks_.width) {
                return static_cast<double>(*found);
            }
        }
        return static_cast<double>(label);
    }

    double counted(std::size_t block, double nearest)
    {
        const std::size_t width = blocks_.width;
        if (!votes_) {
            votes_.emplace(Subsamples{static_cast<unsigned int>(kMostAlong), 1, 1}, 1);
        }
        votes_->begin(1, &nearest);
        do {
            for (std::size_t row = 0; row < blocks_.height * blocks_.depth; ++row) {
                std::copy_n(load(row, block * width, width), width, labels_);
                votes_->take(0, labels_, width);
            }
        } while (votes_->goesOn());
        return *votes_->finish();
    }

    // `count` voxels of a row, counted through the slices, from a column on. They are copied unless
    // they are contiguous.
    const T* load(std::size_t row, std::size_t column, std::size_t count)
    {
        const auto steps = [](std::size_t n) { return static_cast<std::int64_t>(n); };
        const auto voxel = [&](std::size_t x) {
            return reinterpret_cast<const T*>(
                blocks_.first +
                static_cast<std::ptrdiff_t>(blocks_.strideX * steps(x) +
                                            blocks_.strideY * steps(row % blocks_.height) +
                                            blocks_.strideZ * steps(row / blocks_.height)));
        };
        if (blocks_.strideX == static_cast<std::int64_t>(sizeof(T))) {
            return voxel(column);
        }
        for (std::size_t n = 0; n < count; ++n) {
            row_[n] = *voxel(column + n);
        }
        return row_;
    }

    const VoxelBlocks& blocks_;
    std::optional<Votes> votes_;
    T row_[kTogether];
    T leaders_[kTogether];
    double labels_[kMostAlong] = {};
};

}  // namespace

void findModes(const VoxelBlocks& blocks, const unsigned char* const* nearest, double* modes)
{
    exact::withElementType(blocks.type, [&](auto element) {
        using T = typename decltype(element)::Type;
        Modes<T> find(blocks);
        find(nearest, modes);
    });
}

}  // namespace volux::resample::detail
