// Calls on whole volumes against one call of the module for each sample: any map, grid, layout and
// options, with the source between two forbidden pages and nothing but the result written.
#include <hwy/targets.h>

#include <array>
#include <vector>

#include "GuardedBlock.h"
#include "Input.h"
#include "Scene.h"
#include "support/BitExact.h"
#include "support/Difference.h"
#include "support/SingleCalls.h"
#include "volux/resample.h"

namespace volux::fuzz {
namespace {

using test::AffineMap;
using test::Options;
using test::Position;

constexpr int kMostCalls = 4;

/// The source, at one end of guarded pages, and an image around it.
template <class T>
class Source {
public:
    Source(GuardedPages& pages, Input& input) : volume_(someVolume<T>(input))
    {
        T* const block = pages.place<T>(volume_.block.size(), input.flag());
        std::copy(volume_.block.begin(), volume_.block.end(), block);
        const auto size = [](std::int64_t n) { return static_cast<unsigned int>(n); };
        const oracle::Extents& e = volume_.extents;
        image.initializeWithPointer(block, size(e.width), size(e.height), size(e.depth),
                                    size(volume_.channels));
        image.setImageStride(size(volume_.strideY), size(volume_.strideZ), size(volume_.strideC),
                             size(volume_.strideX));
        image.setVoxelSize(volume_.spacing.x, volume_.spacing.y, volume_.spacing.z);
    }

    core::VxImage<T> image;

private:
    oracle::Volume<T> volume_;
};

double someStep(Input& input)
{
    const unsigned int kind = input.below(4);
    if (kind == 0)
        return input.raw<double>();
    return kind == 1 ? 0.25 * (static_cast<int>(input.below(17)) - 8)
                     : input.raw<std::int16_t>() / 8192.0;
}

AffineMap someMap(Input& input)
{
    AffineMap map;
    const bool isOblique = input.flag();
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            map.rows[row][column] = isOblique || row == column ? someStep(input)
                                    : input.flag()             ? 0.0
                                                               : -0.0;
        map.rows[row][3] = someCoordinate(input);
    }
    return map;
}

template <class T>
Options someOptions(Input& input)
{
    // An integer type has to hold it.
    const auto outside = static_cast<double>(input.raw<T>());
    Options options(test::kInterpolators[input.below(3)], test::kBorders[input.below(2)], outside);
    options.overflow = input.flag() ? test::Overflow::WRAP : test::Overflow::SATURATE;
    options.threads = 1 + input.below(2);
    return options;
}

void chooseInstructionSet(Input& input)
{
    hwy::SetSupportedTargetsForTest(0);
    std::vector<std::int64_t> all;
    for (std::int64_t left = hwy::SupportedTargets() & HWY_TARGETS; left != 0; left &= left - 1)
        all.push_back(left & -left);
    hwy::SetSupportedTargetsForTest(all[input.below(static_cast<unsigned int>(all.size()))]);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

template <class T>
void requireSame(T got, T expected)
{
    if (!test::sameBits(got, expected))
        throw test::Difference("a sample is " + test::withBits(got) + ", not " +
                               test::withBits(expected));
}

template <class T>
T at(const core::VxImage<T>& image, unsigned int x, unsigned int y, unsigned int z, int c)
{
    return image(static_cast<int>(x), static_cast<int>(y), static_cast<int>(z), c);
}

/// A box of an image, between forbidden pages.
template <class T>
void cut(core::VxImage<T>& image, const core::Rect& box, bool atEnd, core::VxImage<T>& brick)
{
    static GuardedPages pages;
    core::VxImage<T> copy;
    test::require(image.crop(box, &copy) == core::SUCCESS, "a support is no box of the source");
    const std::size_t count =
        std::size_t{box.width()} * box.height() * box.depth() * image.getChannels();
    T* const block = pages.place<T>(count, atEnd);
    std::copy_n(copy.getBufferPointer(), count, block);
    brick.initializeWithPointer(block, box.width(), box.height(), box.depth(), image.getChannels());
}

/// A box of a grid, or the whole; of a box the brick is what it reads, between guards of its own.
template <class T>
void resampleGrid(Source<T>& source, Input& input)
{
    resample::Grid grid;
    grid.width = 1 + input.below(70);
    grid.height = 1 + input.below(4);
    grid.depth = 1 + input.below(3);
    grid.map = someMap(input);
    const Options options = someOptions<T>(input);
    resample::ResampleRegion region;
    core::VxImage<T>& image = source.image;
    region.sourceWidth = image.getWidth();
    region.sourceHeight = image.getHeight();
    region.sourceDepth = image.getDepth();
    const unsigned int x = input.below(256) % grid.width;
    const unsigned int y = input.below(4) % grid.height;
    const unsigned int z = input.below(3) % grid.depth;
    const bool isPart = input.flag();
    region.output = isPart ? core::Rect(x, grid.width - 1, y, grid.height - 1, z, grid.depth - 1)
                           : core::Rect(0, grid.width - 1, 0, grid.height - 1, 0, grid.depth - 1);
    core::VxImage<T> result;
    core::VxImage<T> brick;
    core::ErrorType code = core::SUCCESS;
    if (isPart) {
        core::Rect box;
        code = region.support(grid, &box, options);
        if (code == core::SUCCESS) {
            cut(image, box, input.flag(), brick);
            region.brickX = box.xStart;
            region.brickY = box.yStart;
            region.brickZ = box.zStart;
            code = resample::resample(brick, grid, region, &result, options);
        }
    } else {
        code = resample::resample(image, grid, &result, options);
    }
    test::require((code == core::SUCCESS) == grid.map.isInvertible(), "a map is refused or not");
    for (unsigned int k = 0; k < result.getDepth(); ++k)
        for (unsigned int j = 0; j < result.getHeight(); ++j)
            for (unsigned int i = 0; i < result.getWidth(); ++i)
                for (int c = 0; c < static_cast<int>(result.getChannels()); ++c) {
                    const core::Rect& box = region.output;
                    const Position p =
                        test::positionOf(grid.map, box.xStart + i, box.yStart + j, box.zStart + k);
                    requireSame(at(result, i, j, k, c), test::element(image, p, c, options));
                }
}

template <class T>
void samplePositions(const Source<T>& source, Input& input)
{
    std::vector<Position> positions;
    for (unsigned int n = input.below(40); n > 0; --n) {
        const oracle::Position p = somePosition(input);
        positions.push_back({p.x, p.y, p.z});
    }
    const Options options = someOptions<T>(input);
    std::vector<double> results(positions.size() * source.image.getChannels());
    test::require(
        resample::sample(source.image, positions.data(), positions.size(), resample::Units::VOXELS,
                         resample::kAllChannels, results.data(), options) == core::SUCCESS,
        "positions are refused");
    std::size_t next = 0;
    for (const Position& p : positions)
        for (int c = 0; c < static_cast<int>(source.image.getChannels()); ++c)
            requireSame(results[next++], test::reading(source.image, p, c, options));
}

template <class T>
void run(Input& input)
{
    static GuardedPages pages;
    Source<T> source(pages, input);
    for (int n = 0; n < kMostCalls && !input.empty(); ++n) {
        chooseInstructionSet(input);
        if (input.below(4) == 0)
            samplePositions(source, input);
        else
            resampleGrid(source, input);
    }
}

}  // namespace
}  // namespace volux::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    volux::fuzz::Input input(data, size);
    volux::fuzz::withElementType(input.below(7),
                                 [&](auto zero) { volux::fuzz::run<decltype(zero)>(input); });
    return 0;
}
