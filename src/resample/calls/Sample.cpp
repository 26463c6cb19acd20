#include <algorithm>
#include <new>
#include <type_traits>

#include "CallersPolicies.h"
#include "Checks.h"
#include "Policies.h"
#include "exact/Rules.h"
#include "resample/rows/Cost.h"
#include "resample/rows/Work.h"
#include "resample/vectors/Elements.h"
#include "resample/vectors/Gradient.h"
#include "volux/resample/Gradient.h"
#include "volux/resample/Resample.h"

namespace volux::resample::detail {

using core::ErrorType;
using core::SUCCESS;

namespace {

constexpr std::size_t kPart = 16 * kBlock;

struct Places {
    const Positions& positions;
    std::size_t count;
    const Frame& frame;
    const core::VoxelSize& spacing;
};

// Where the readings go: `channels` of them for each position, from channel `first` of the source.
struct Readings {
    core::DataType type;
    std::size_t bytes;
    unsigned char* data;
    unsigned int first;
    unsigned int channels;
};

void divide(Block& block, const core::VoxelSize& spacing)
{
    for (std::size_t n = 0; n < block.count; ++n) {
        block.x[n] /= spacing.x;
        block.y[n] /= spacing.y;
        block.z[n] /= spacing.z;
    }
}

void map(Block& block, const AffineMap& map)
{
    for (std::size_t n = 0; n < block.count; ++n) {
        const Position p = {block.x[n], block.y[n], block.z[n]};
        const auto coordinate = [&](const double(&row)[4]) {
            return exact::along(exact::rowStart(row, p.y, p.z), row[0], p.x);
        };
        block.x[n] = coordinate(map.rows[0]);
        block.y[n] = coordinate(map.rows[1]);
        block.z[n] = coordinate(map.rows[2]);
    }
}

void fill(const Places& places, std::size_t first, Block& block)
{
    const Positions& from = places.positions;
    for (std::size_t n = 0; n < block.count; ++n) {
        const std::int64_t at = from.stride * static_cast<std::int64_t>(first + n);
        block.x[n] = from.x[at];
        block.y[n] = from.y[at];
        block.z[n] = from.z[at];
    }
    if (places.frame.toVoxels != nullptr) {
        map(block, *places.frame.toVoxels);
    } else if (places.frame.units == Units::PHYSICAL) {
        divide(block, places.spacing);
    }
    for (double* const padding : {block.x, block.y, block.z}) {
        std::fill(padding + block.count, padding + block.count + (kRoom - kBlock), 0.0);
    }
}

// From derivatives by voxels to derivatives by what positions are counted in.
void convertSlopes(const Places& places, GradientBlock& block)
{
    const AffineMap* const map = places.frame.toVoxels;
    for (std::size_t n = 0; n < block.count; ++n) {
        const Position g = {block.slopesX[n], block.slopesY[n], block.slopesZ[n]};
        const auto alongColumn = [&](int column) {
            return (map->rows[0][column] * g.x + map->rows[1][column] * g.y) +
                   map->rows[2][column] * g.z;
        };
        const bool isMapped = map != nullptr;
        block.slopesX[n] = isMapped ? alongColumn(0) : g.x / places.spacing.x;
        block.slopesY[n] = isMapped ? alongColumn(1) : g.y / places.spacing.y;
        block.slopesZ[n] = isMapped ? alongColumn(2) : g.z / places.spacing.z;
    }
}

// Stores the readings of one channel, and their derivatives behind each.
void store(const GradientBlock& block, std::size_t step, ReadingAndGradient* results)
{
    for (std::size_t n = 0; n < block.count; ++n) {
        results[n * step] = {block.readings[n], block.slopesX[n], block.slopesY[n],
                             block.slopesZ[n]};
    }
}

void sampleBlock(const Source& source, const Places& places, const Readings& results, Overflow,
                 std::size_t first, GradientBlock& block)
{
    fill(places, first, block);
    const bool isPerVoxel = places.frame.toVoxels == nullptr && places.frame.units == Units::VOXELS;
    for (unsigned int c = 0; c < results.channels; ++c) {
        readGradients(source.channel(results.first + c), source.reading.kernel,
                      source.reading.outside, block);
        if (!isPerVoxel) {
            convertSlopes(places, block);
        }
        store(block, results.channels,
              reinterpret_cast<ReadingAndGradient*>(results.data) + first * results.channels + c);
    }
}

void sampleBlock(const Source& source, const Places& places, const Readings& results,
                 Overflow overflow, std::size_t first, Block& block)
{
    fill(places, first, block);
    for (unsigned int c = 0; c < results.channels; ++c) {
        source.read(results.first + c, block);
        storeElements({results.type, overflow}, block.readings, block.count,
                      static_cast<std::int64_t>(results.channels * results.bytes),
                      results.data + (first * results.channels + c) * results.bytes);
    }
}

// In blocks that hold the readings, or their derivatives as well.
template <class AnyBlock>
ErrorType samplePlaces(const View<const void>& view, const Reading& reading, const Places& places,
                       const Readings& results, const Options& options)
{
    Source source = {untyped(view), wholeOf(view), reading, {}};
    const auto part = [&](std::size_t first, std::size_t end) {
        AnyBlock block;
        for (std::size_t n = first; n < end; n += kBlock) {
            block.count = std::min(kBlock, end - n);
            sampleBlock(source, places, results, options.overflow, n, block);
        }
    };
    try {
        if (reading.isOwn) {
            const ErrorType result = sampleByImage(view, options, source.own);
            if (result != SUCCESS) {
                return result;
            }
        }
        const double samples =
            static_cast<double>(places.count) * static_cast<double>(results.channels);
        const Job job = {places.count, kPart, samples * costAnywhere(reading)};
        return shareOut(job, options, part) ? SUCCESS : kCancelled;
    } catch (const std::bad_alloc&) {
        return core::ERR_ALLOCATION_FAILED;
    }
}

ErrorType checkPlaces(const View<const void>& source, const Places& places, const Readings& results)
{
    if (places.frame.units == Units::PHYSICAL && !isSpacing(places.spacing)) {
        return core::ERR_INVALID_ARGUMENT;
    }
    Memory written = {};
    const Steps perPlace = {places.count, results.channels};
    bool isFree =
        findMemory(results.data, results.bytes, {perPlace, {results.channels, 1}}, written);
    Memory read = {};
    isFree = isFree && findMemory(source, read) && areApart(read, written);
    for (const double* const numbers :
         {places.positions.x, places.positions.y, places.positions.z}) {
        isFree =
            isFree &&
            findMemory(numbers, sizeof *numbers, {{places.count, places.positions.stride}}, read) &&
            areApart(read, written);
    }
    return isFree ? SUCCESS : core::ERR_INVALID_ARGUMENT;
}

ErrorType check(const View<const void>& source, const Places& places, const Results& results,
                const Options& options, Reading& reading)
{
    const Positions& from = places.positions;
    const AffineMap* const map = places.frame.toVoxels;
    const bool isNull =
        from.x == nullptr || from.y == nullptr || from.z == nullptr || results.data == nullptr;
    ErrorType result = places.count > 0 && isNull ? core::ERR_NULL_POINTER : SUCCESS;
    const auto next = [&](auto test) { result = result == SUCCESS ? test() : result; };
    next([&] { return checkSource(source, options, results.type); });
    next([&] { return readingOf(source.type, options, reading); });
    const Subsamples& n = options.subsamples;  // a position has no size
    next([&] { return n.x == 1 && n.y == 1 && n.z == 1 ? SUCCESS : core::ERR_INVALID_ARGUMENT; });
    next([&] { return reading.isOwn ? checkSize(source.type, sizeOf(source)) : SUCCESS; });
    next([&] {
        return map == nullptr || map->isInvertible() ? SUCCESS : core::ERR_INVALID_ARGUMENT;
    });
    return result;
}

}  // namespace

namespace {

// Readings of `bytes` each, by themselves or with their derivatives.
template <class AnyBlock>
ErrorType sampleIn(const View<const void>& source, const Frame& frame, const Positions& positions,
                   std::size_t count, int channel, const Results& results, std::size_t bytes,
                   const Options& options)
{
    const Places places = {positions, count, frame, source.spacing};
    Reading reading;
    ErrorType result = check(source, places, results, options, reading);
    if (result != SUCCESS) {
        return result;
    }
    const bool hasNoSlopes = reading.isOwn || reading.isLabels;
    if (hasNoSlopes && std::is_same_v<AnyBlock, GradientBlock>) {
        return core::ERR_INVALID_ARGUMENT;
    }
    const bool isAll = channel == kAllChannels;
    const Readings to = {results.type, bytes, static_cast<unsigned char*>(results.data),
                         isAll ? 0U : static_cast<unsigned int>(channel),
                         isAll ? source.channels : 1U};
    if (to.first >= source.channels) {
        return core::ERR_INVALID_CHANNEL;
    }
    result = checkPlaces(source, places, to);
    return result != SUCCESS ? result
                             : samplePlaces<AnyBlock>(source, reading, places, to, options);
}

}  // namespace

ErrorType sampleAt(const View<const void>& source, const Frame& frame, const Positions& positions,
                   std::size_t count, int channel, const Results& results, const Options& options)
{
    return sampleIn<Block>(source, frame, positions, count, channel, results, bytesOf(results.type),
                           options);
}

ErrorType sampleGradientAt(const View<const void>& source, const Frame& frame,
                           const Positions& positions, std::size_t count, int channel,
                           ReadingAndGradient* results, const Options& options)
{
    return sampleIn<GradientBlock>(source, frame, positions, count, channel,
                                   {core::DT_DOUBLE, results}, sizeof *results, options);
}

}  // namespace volux::resample::detail
