#include <algorithm>
#include <limits>
#include <new>
#include <type_traits>

#include "CallersPolicies.h"
#include "Checks.h"
#include "Policies.h"
#include "exact/Rules.h"
#include "resample/rows/Cost.h"
#include "resample/rows/Work.h"
#include "resample/vectors/Elements.h"
#include "volux/resample/Resample.h"

#include "volux/core/detail/ElementTypes.inc"

namespace volux::resample {

using core::ErrorType;
using core::SUCCESS;
using core::VxImage;

namespace detail {

namespace {

constexpr std::size_t kPart = 16 * kBlock;

struct Places {
    const Position* positions;
    std::size_t count;
    Units units;
    core::VoxelSize spacing;
};

// Where the results go: `channels` of them for each position, from channel `first` of the source.
struct Results {
    core::DataType type;
    std::size_t bytes;
    unsigned char* data;
    unsigned int first;
    unsigned int channels;
};

void fill(const Places& places, std::size_t first, Block& block)
{
    for (std::size_t n = 0; n < block.count; ++n) {
        const Position& p = places.positions[first + n];
        block.x[n] = p.x;
        block.y[n] = p.y;
        block.z[n] = p.z;
    }
    for (std::size_t n = 0; places.units == Units::PHYSICAL && n < block.count; ++n) {
        block.x[n] /= places.spacing.x;
        block.y[n] /= places.spacing.y;
        block.z[n] /= places.spacing.z;
    }
    for (double* const padding : {block.x, block.y, block.z}) {
        std::fill(padding + block.count, padding + block.count + (kRoom - kBlock), 0.0);
    }
}

void sampleBlock(const Source& source, const Places& places, const Results& results,
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

ErrorType samplePlaces(const Source& source, const Places& places, const Results& results,
                       const Options& options)
{
    const auto part = [&](std::size_t first, std::size_t end) {
        Block block;
        for (std::size_t n = first; n < end; n += kBlock) {
            block.count = std::min(kBlock, end - n);
            sampleBlock(source, places, results, options.overflow, n, block);
        }
    };
    try {
        const double samples =
            static_cast<double>(places.count) * static_cast<double>(results.channels);
        const Job job = {places.count, kPart, samples * costAnywhere(source.reading)};
        return shareOut(job, options, part) ? SUCCESS : kCancelled;
    } catch (const std::bad_alloc&) {
        return core::ERR_ALLOCATION_FAILED;
    }
}

ErrorType checkPlaces(const UntypedImage& source, const Places& places, const Results& results)
{
    if (places.units == Units::PHYSICAL && !isSpacing(places.spacing)) {
        return core::ERR_INVALID_ARGUMENT;
    }
    const std::size_t perPlace = results.channels * results.bytes;
    if (places.count >
        std::numeric_limits<std::size_t>::max() / 2 / std::max(perPlace, sizeof(Position))) {
        return core::ERR_INVALID_ARGUMENT;
    }
    const std::size_t bytes = places.count * perPlace;
    const Memory written = {results.data, results.data + bytes};
    const Memory read = {places.positions, places.positions + places.count};
    const bool apart = areApart(memoryOf(source), written) && areApart(read, written);
    return apart ? SUCCESS : core::ERR_INVALID_ARGUMENT;
}

template <class T>
Source sourceOf(const VxImage<T>& image)
{
    Source source = {untyped(image), {}, {}, {}};
    source.region.sourceWidth = image.getWidth();
    source.region.sourceHeight = image.getHeight();
    source.region.sourceDepth = image.getDepth();
    return source;
}

}  // namespace

}  // namespace detail

template <class T, class Result>
ErrorType sample(const VxImage<T>& image, const Position* positions, std::size_t count, Units units,
                 int channel, Result* results,
                 const Options& options) noexcept(detail::served<T, Result>())
{
    if (count > 0 && (positions == nullptr || results == nullptr)) {
        return core::ERR_NULL_POINTER;
    }
    detail::Source source = detail::sourceOf(image);
    ErrorType result = detail::checkSource(source.image);
    if (result == SUCCESS) {
        result = detail::readingOf<T>(options, source.reading);
    }
    if (result != SUCCESS) {
        return result;
    }
    const bool isAll = channel == kAllChannels;
    if (!isAll && (channel < 0 || static_cast<unsigned int>(channel) >= image.getChannels())) {
        return core::ERR_INVALID_CHANNEL;
    }
    const detail::Places places = {positions, count, units, detail::spacingOf(image)};
    const detail::Results to = {
        core::detail::tagOf<Result>(), sizeof(Result), reinterpret_cast<unsigned char*>(results),
        isAll ? 0U : static_cast<unsigned int>(channel), isAll ? image.getChannels() : 1U};
    result = detail::checkPlaces(source.image, places, to);
    if (result != SUCCESS) {
        return result;
    }
    const detail::CallersPolicies<T> own(image, options);
    source.own = own.sample();
    return detail::samplePlaces(source, places, to, options);
}

#define VOLUX_SAMPLE(T, RESULT)                                                                  \
    template ErrorType sample<T, RESULT>(const VxImage<T>&, const Position*, std::size_t, Units, \
                                         int, RESULT*, const Options&);
#define VOLUX_SAMPLE_AS_IT_IS(T) VOLUX_SAMPLE(T, T)
VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_SAMPLE_AS_IT_IS)
VOLUX_SAMPLE(float, double)
VOLUX_SAMPLE(int, double)
VOLUX_SAMPLE(short, double)
VOLUX_SAMPLE(unsigned int, double)
VOLUX_SAMPLE(unsigned short, double)
VOLUX_SAMPLE(unsigned char, double)
#undef VOLUX_SAMPLE_AS_IT_IS
#undef VOLUX_SAMPLE

}  // namespace volux::resample

#undef VOLUX_FOR_EACH_ELEMENT_TYPE
