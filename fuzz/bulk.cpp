// Calls on whole volumes against one call of volux_core for each sample, and the value outside
// where the edge of a grid has ended: any map, field, grid, layout, result type and options, with
// the source and a view of the result between forbidden pages, and nothing but the result written.
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <vector>

#include "Input.h"
#include "Places.h"
#include "Scene.h"
#include "Views.h"
#include "Warps.h"
#include "support/BitExact.h"
#include "support/Described.h"
#include "support/Difference.h"
#include "support/GradientOracle.h"
#include "support/InstructionSets.h"
#include "support/SubsampleMeans.h"
#include "volux/resample.h"

namespace volux::fuzz {
namespace {

using test::AffineMap;
using test::Options;
using test::Position;

constexpr int kMostCalls = 4;

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
    Options options(test::kInterpolators[input.below(4)], test::kBorders[input.below(2)], outside);
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
View<const T> cut(const core::VxImage<T>& image, const core::Rect& box, Input& input)
{
    static const test::GuardedPages pages;
    const PlacedView<T> placed(
        pages,
        someDistances(input, {box.width(), box.height(), box.depth(), image.getChannels()}, false),
        input.flag());
    test::forEachElement(placed.view(),
                         [&](unsigned int x, unsigned int y, unsigned int z, unsigned int c) {
                             test::elementOf(placed.view(), x, y, z, c) =
                                 test::at(image, box.xStart + x, box.yStart + y, box.zStart + z, c);
                         });
    return placed.view();
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

/// A part of the grid from the brick that it reads, which is between guards of its own; through a
/// field, if there is one.
template <class T, class Destination>
core::ErrorType resamplePart(const core::VxImage<T>& image, const resample::Grid& grid,
                             const Field* field, const core::Rect& output, Input& input,
                             const Destination& destination, const Options& options)
{
    resample::ResampleRegion region;
    region.sourceWidth = image.getWidth();
    region.sourceHeight = image.getHeight();
    region.sourceDepth = image.getDepth();
    region.output = output;
    core::Rect box;
    const core::ErrorType code = field == nullptr
                                     ? region.support(grid, &box, options)
                                     : region.support(grid, field->warp(), &box, options);
    if (code != core::SUCCESS)
        return code;
    region.brickX = box.xStart;
    region.brickY = box.yStart;
    region.brickZ = box.zStart;
    const View<const T> brick = cut(image, box, input);
    return field == nullptr
               ? resample::resample(brick, grid, region, destination, options)
               : resample::resample(brick, grid, field->warp(), region, destination, options);
}

/// Few, or as many as the steps are long, if these are short.
test::Subsamples someSubsamples(const resample::Grid& grid, Input& input)
{
    const auto some = [&](int axis) {
        double longest = 0.0;
        for (const auto& row : grid.map.rows)
            longest = std::fmax(longest, std::abs(row[axis]));
        const unsigned int count = input.below(5);
        return count == 4 ? (longest < 6.0 ? 0U : 6U) : 1U + count;
    };
    const unsigned int x = some(0);
    const unsigned int y = some(1);
    return {x, y, some(2)};
}

/// What becomes of a sample in a result of type R.
template <class R, class T>
R expectedAt(const core::VxImage<T>& image, const Position& p, int c, const Options& options)
{
    if constexpr (std::is_same_v<R, T>)
        return test::element(image, p, c, options);
    else
        return static_cast<R>(test::reading(image, p, c, options));
}

/// Memory of the caller's, whose gaps nobody may write.
template <class R>
class ViewedResult {
public:
    ViewedResult(const core::Rect& box, unsigned int channels, Input& input)
        : placed_(pages(),
                  someDistances(input, {box.width(), box.height(), box.depth(), channels}, false),
                  input.flag())
    {
        std::fill(placed_.begin(), placed_.end(), kUntouched);
    }

    const View<R>& view() const { return placed_.view(); }

    void requireUntouchedGaps() const
    {
        test::forEachElement(view(),
                             [&](auto... at) { test::elementOf(view(), at...) = kUntouched; });
        test::require(std::count(placed_.begin(), placed_.end(), kUntouched) ==
                          placed_.end() - placed_.begin(),
                      "a call writes between the voxels of its result");
    }

private:
    static constexpr R kUntouched = 77;

    static const test::GuardedPages& pages()
    {
        static const test::GuardedPages room(32);
        return room;
    }

    PlacedView<R> placed_;
};

/// A box of a grid, or the whole.
template <class R, class T>
struct GridCall {
    const Source<T>& source;
    resample::Grid grid;
    Options options;
    core::Rect box;
    unsigned int kind;  // the lowest bit: a part; the next two: through a field
    std::unique_ptr<Field> field;

    GridCall(const Source<T>& from, Input& input)
        : source(from),
          grid(someGrid(input)),
          options(someOptions<T>(input)),
          box(someOutput(grid, input)),
          kind(input.raw<std::uint8_t>())
    {
        if ((kind & 1U) == 0)
            box.xStart = box.yStart = box.zStart = 0;
        if ((kind & 6U) == 6) {
            const AffineMap toField = someMap(input);
            field = std::make_unique<Field>(input, toField, someMap(input));
        } else {
            options.subsamples = someSubsamples(grid, input);
        }
    }

    /// Whether the call made a result; a map that is not invertible is refused.
    template <class Destination>
    bool make(Input& input, const Destination& destination) const
    {
        const core::ErrorType code =
            (kind & 1U) != 0
                ? resamplePart(source.image, grid, field.get(), box, input, destination, options)
            : field == nullptr
                ? resample::resample(source.view, grid, destination, options)
                : resample::resample(source.view, grid, field->warp(), destination, options);
        const bool isRight = grid.map.isInvertible() && (field == nullptr || field->isRight());
        if ((code == core::SUCCESS) != isRight)
            throw test::Difference("code " + std::to_string(code) + " for " +
                                   test::described(grid.map));
        return code == core::SUCCESS;
    }

    void requireAll(const View<R>& result) const
    {
        test::forEachElement(
            result, [&](unsigned int i, unsigned int j, unsigned int k, unsigned int c) {
                const unsigned int x = box.xStart + i, y = box.yStart + j, z = box.zStart + k;
                const Position at = test::positionOf(grid.map, x, y, z);
                const Position p = field == nullptr ? at : field->lead(at);
                const int channel = static_cast<int>(c);
                const double expected =
                    field == nullptr
                        ? test::meanReading(source.image, grid.map, x, y, z, channel, options)
                        : test::gridReading(source.image, p, channel, options);
                requireSame(test::elementOf(result, i, j, k, c),
                            test::storedReading<R>(expected, options), source.image, p, channel,
                            options);
            });
    }
};

template <class R, class T>
void resampleGrid(const Source<T>& source, Input& input)
{
    const GridCall<R, T> call(source, input);
    if (input.flag()) {
        core::VxImage<R> result;
        if (call.make(input, &result))
            call.requireAll(resample::viewOf(result));
        return;
    }
    const ViewedResult<R> result(call.box, source.image.getChannels(), input);
    if (call.make(input, result.view()))
        call.requireAll(result.view());
    result.requireUntouchedGaps();
}

bool isSpacing(const core::VoxelSize& s)
{
    return std::isfinite(s.x) && std::isfinite(s.y) && std::isfinite(s.z);
}

template <class R, class T>
void samplePositions(const Source<T>& source, Input& input)
{
    const Places places(input);
    const Options options = someOptions<T>(input);
    const bool isMapped = input.flag();
    const AffineMap map = isMapped ? someMap(input) : AffineMap();
    const bool isPhysical = !isMapped && input.flag();
    const core::VoxelSize unit = isPhysical ? source.view.spacing : core::VoxelSize(1, 1, 1);
    const auto units = isPhysical ? resample::Units::PHYSICAL : resample::Units::VOXELS;
    std::vector<R> results(places.count() * source.view.channels);
    const core::ErrorType code =
        isMapped ? resample::sample(source.view, map, places.all(), places.count(),
                                    resample::kAllChannels, results.data(), options)
                 : resample::sample(source.view, places.all(), places.count(), units,
                                    resample::kAllChannels, results.data(), options);
    test::require((code == core::SUCCESS) == (map.isInvertible() && isSpacing(unit)),
                  "positions are refused, or not");
    std::size_t next = 0;
    for (std::size_t n = 0; code == core::SUCCESS && n < places.count(); ++n) {
        const Position from = places[n];
        const Position p = isMapped ? test::positionOf(map, from.x, from.y, from.z)
                                    : Position{from.x / unit.x, from.y / unit.y, from.z / unit.z};
        for (int c = 0; c < static_cast<int>(source.view.channels); ++c)
            requireSame(results[next++], expectedAt<R>(source.image, p, c, options), source.image,
                        p, c, options);
    }
}

/// A sampler of one channel, called at some positions.
template <class T>
void callSampler(const Source<T>& source, Input& input)
{
    const Places places(input);
    const Options options = someOptions<T>(input);
    const int c = static_cast<int>(input.below(source.view.channels));
    const resample::Sampler sampler(source.view, options, c);
    test::require(sampler.error() == core::SUCCESS, "a sampler is refused");
    for (std::size_t n = 0; n < places.count(); ++n) {
        const Position p = places[n];
        requireSame(sampler(p.x, p.y, p.z), test::reading(source.image, p, c, options),
                    source.image, p, c, options);
    }
}

/// Derivatives by voxels, of all channels.
template <class T>
void sampleGradients(const Source<T>& source, Input& input)
{
    const Places places(input);
    const Options options = someOptions<T>(input);
    std::vector<resample::ReadingAndGradient> results(places.count() * source.view.channels);
    const core::ErrorType code =
        resample::sampleGradient(source.view, places.all(), places.count(), resample::Units::VOXELS,
                                 resample::kAllChannels, results.data(), options);
    const bool haveNone = options.interpolator == &resample::LABELS;
    test::require(code == (haveNone ? core::ERR_INVALID_ARGUMENT : core::SUCCESS),
                  "derivatives are refused, or those of labels are not");
    if (haveNone)
        return;
    for (std::size_t n = 0; n < results.size(); ++n) {
        const Position p = places[n / source.view.channels];
        const int c = static_cast<int>(n % source.view.channels);
        const auto expected = test::definition::gradient(source.image, p, c, options);
        requireSame(results[n].value, expected.value, source.image, p, c, options);
        requireSame(results[n].x, expected.x, source.image, p, c, options);
        requireSame(results[n].y, expected.y, source.image, p, c, options);
        requireSame(results[n].z, expected.z, source.image, p, c, options);
    }
}

template <class R, class T>
void call(const Source<T>& source, Input& input)
{
    const unsigned int kind = input.below(6);
    if (kind == 0)
        samplePositions<R>(source, input);
    else if (kind == 1)
        callSampler(source, input);
    else if (kind == 2)
        sampleGradients(source, input);
    else
        resampleGrid<R>(source, input);
}

template <class T>
void run(Input& input)
{
    static const test::GuardedPages pages;
    Source<T> source;
    placeSource(pages, input, source);
    for (int n = 0; n < kMostCalls && !input.empty(); ++n) {
        instructions =
            test::chooseInstructionSet([&](unsigned int count) { return input.below(count); });
        const unsigned int kind = input.below(4);
        if (kind < 2)
            call<T>(source, input);
        else
            kind == 2 ? call<float>(source, input) : call<double>(source, input);
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
