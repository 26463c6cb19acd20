// Calls on whole volumes against one call of volux_core for each sample, and the value outside
// where the edge of a grid has ended: any map, grid, layout and options, with the source between
// two forbidden pages and nothing but the result written.
#include <array>
#include <vector>

#include "Input.h"
#include "Scene.h"
#include "support/BitExact.h"
#include "support/Described.h"
#include "support/Difference.h"
#include "support/GuardedPages.h"
#include "support/InstructionSets.h"
#include "support/WrappedVolume.h"
#include "volux/resample.h"

namespace volux::fuzz {
namespace {

using test::AffineMap;
using test::Options;
using test::Position;

constexpr int kMostCalls = 4;

/// An image whose voxels are at one end of guarded pages.
template <class T>
void placeSource(test::GuardedPages& pages, Input& input, core::VxImage<T>& image)
{
    const test::Volume<T> volume = someVolume<T>(input);
    T* const block = pages.place<T>(volume.block.size(), input.flag());
    std::copy(volume.block.begin(), volume.block.end(), block);
    test::wrap(block, volume, &image);
    image.setVoxelSize(volume.spacing.x, volume.spacing.y, volume.spacing.z);
}

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
    // An integer type must hold it.
    const auto outside = static_cast<double>(input.raw<T>());
    Options options(test::kInterpolators[input.below(3)], test::kBorders[input.below(2)], outside);
    options.overflow = input.flag() ? test::Overflow::WRAP : test::Overflow::SATURATE;
    options.threads = 1 + input.below(2);
    options.edgeExtends = input.flag();
    return options;
}

std::string instructions;  // that the latest call was made with

template <class T, class Source>
void requireSame(T got, T expected, const core::VxImage<Source>& image, const Position& p, int c,
                 const Options& options)
{
    if (!test::sameBits(got, expected))
        throw test::Difference("a sample is " + test::withBits(got) + ", not " +
                               test::withBits(expected) + ", with " + instructions + ", " +
                               test::describedCall(image, p, c, options));
}

/// A box of an image, between forbidden pages.
template <class T>
void cut(core::VxImage<T>& image, const core::Rect& box, bool atEnd, core::VxImage<T>& brick)
{
    static test::GuardedPages pages;
    core::VxImage<T> copy;
    test::require(image.crop(box, &copy) == core::SUCCESS, "a support is no box of the source");
    const std::size_t count =
        std::size_t{box.width()} * box.height() * box.depth() * image.getChannels();
    T* const block = pages.place<T>(count, atEnd);
    std::copy_n(copy.getBufferPointer(), count, block);
    brick.initializeWithPointer(block, box.width(), box.height(), box.depth(), image.getChannels());
}

resample::Grid someGrid(Input& input)
{
    resample::Grid grid;
    grid.width = 1 + input.below(70);
    grid.height = 1 + input.below(4);
    grid.depth = 1 + input.below(3);
    grid.map = someMap(input);
    return grid;
}

/// From any voxel of the grid to its last.
core::Rect someOutput(const resample::Grid& grid, Input& input)
{
    const unsigned int x = input.below(256) % grid.width;
    const unsigned int y = input.below(4) % grid.height;
    const unsigned int z = input.below(3) % grid.depth;
    return {x, grid.width - 1, y, grid.height - 1, z, grid.depth - 1};
}

/// A part of the grid from the brick that it reads, which is between guards of its own.
template <class T>
core::ErrorType resamplePart(core::VxImage<T>& image, const resample::Grid& grid,
                             const core::Rect& output, Input& input, core::VxImage<T>& result,
                             const Options& options)
{
    resample::ResampleRegion region;
    region.sourceWidth = image.getWidth();
    region.sourceHeight = image.getHeight();
    region.sourceDepth = image.getDepth();
    region.output = output;
    core::Rect box;
    const core::ErrorType code = region.support(grid, &box, options);
    if (code != core::SUCCESS)
        return code;
    core::VxImage<T> brick;
    cut(image, box, input.flag(), brick);
    region.brickX = box.xStart;
    region.brickY = box.yStart;
    region.brickZ = box.zStart;
    return resample::resample(brick, grid, region, &result, options);
}

/// A box of a grid, or the whole.
template <class T>
void resampleGrid(core::VxImage<T>& image, Input& input)
{
    const resample::Grid grid = someGrid(input);
    const Options options = someOptions<T>(input);
    core::Rect box = someOutput(grid, input);
    const bool isPart = input.flag();
    core::VxImage<T> result;
    if (!isPart)
        box.xStart = box.yStart = box.zStart = 0;
    const core::ErrorType code = isPart ? resamplePart(image, grid, box, input, result, options)
                                        : resample::resample(image, grid, &result, options);
    if ((code == core::SUCCESS) != grid.map.isInvertible())
        throw test::Difference("code " + std::to_string(code) + " for " +
                               test::described(grid.map));
    for (unsigned int k = 0; k < result.getDepth(); ++k)
        for (unsigned int j = 0; j < result.getHeight(); ++j)
            for (unsigned int i = 0; i < result.getWidth(); ++i)
                for (unsigned int c = 0; c < result.getChannels(); ++c) {
                    const Position p =
                        test::positionOf(grid.map, box.xStart + i, box.yStart + j, box.zStart + k);
                    const int channel = static_cast<int>(c);
                    requireSame(test::at(result, i, j, k, c),
                                test::gridElement(image, p, channel, options), image, p, channel,
                                options);
                }
}

template <class T>
void samplePositions(const core::VxImage<T>& image, Input& input)
{
    std::vector<Position> positions;
    for (unsigned int n = input.below(40); n > 0; --n) {
        const oracle::Position p = somePosition(input);
        positions.push_back({p.x, p.y, p.z});
    }
    const Options options = someOptions<T>(input);
    std::vector<double> results(positions.size() * image.getChannels());
    test::require(
        resample::sample(image, positions.data(), positions.size(), resample::Units::VOXELS,
                         resample::kAllChannels, results.data(), options) == core::SUCCESS,
        "positions are refused");
    std::size_t next = 0;
    for (const Position& p : positions)
        for (int c = 0; c < static_cast<int>(image.getChannels()); ++c)
            requireSame(results[next++], test::reading(image, p, c, options), image, p, c, options);
}

template <class T>
void run(Input& input)
{
    static test::GuardedPages pages;
    core::VxImage<T> image;
    placeSource(pages, input, image);
    for (int n = 0; n < kMostCalls && !input.empty(); ++n) {
        instructions =
            test::chooseInstructionSet([&](unsigned int count) { return input.below(count); });
        if (input.below(4) == 0)
            samplePositions(image, input);
        else
            resampleGrid(image, input);
    }
}

}  // namespace
}  // namespace volux::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    volux::fuzz::Input input(data, size);
    volux::test::withElementType(input.below(7),
                                 [&](auto zero) { volux::fuzz::run<decltype(zero)>(input); });
    return 0;
}
