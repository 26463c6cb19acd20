#include "volux/resample/Sampler.h"

#include <limits>
#include <new>

#include "CallersPolicies.h"
#include "Checks.h"
#include "Policies.h"
#include "resample/vectors/Single.h"

namespace volux::resample::detail {

using core::ErrorType;
using core::SUCCESS;

namespace {

double readNothing(const SampledChannel&, double, double, double)
{
    return std::numeric_limits<double>::quiet_NaN();
}

// Samples by volux_core itself, and the options that they go by.
struct OwnReader {
    Options options;
    int channel;
    OwnSample sample;
};

double readOwn(const SampledChannel& channel, double x, double y, double z)
{
    const auto& own = *static_cast<const OwnReader*>(channel.own);
    return own.sample(x, y, z, own.channel);
}

ErrorType makeOwn(const View<const void>& source, int channel, const Options& options,
                  SamplerParts& parts)
{
    try {
        const auto own = std::make_shared<OwnReader>();
        own->options = Options(options.interpolator, options.border, options.outside);
        own->channel = channel;
        const ErrorType result = sampleByImage(source, own->options, own->sample);
        if (result == SUCCESS) {
            parts.channel.read = readOwn;
            parts.channel.own = own.get();
            parts.own = own;
        }
        return result;
    } catch (const std::bad_alloc&) {
        return core::ERR_ALLOCATION_FAILED;
    }
}

ErrorType check(const View<const void>& source, int channel, const Options& options,
                Reading& reading)
{
    ErrorType result = checkSource(source, options, core::DT_DOUBLE);
    const auto next = [&](auto test) { result = result == SUCCESS ? test() : result; };
    next([&] { return readingOf(source.type, options, reading); });
    reading.isOwn = reading.isOwn || reading.isLabels;  // which volux_core calls as it does any
    next([&] { return reading.isOwn ? checkSize(source.type, sizeOf(source)) : SUCCESS; });
    next([&] {
        return static_cast<unsigned int>(channel) < source.channels ? SUCCESS
                                                                    : core::ERR_INVALID_CHANNEL;
    });
    return result;
}

}  // namespace

SamplerParts makeSampler(const View<const void>& source, int channel, const Options& options)
{
    SamplerParts parts;
    parts.channel.read = readNothing;
    Reading reading;
    parts.error = check(source, channel, options, reading);
    if (parts.error != SUCCESS) {
        return parts;
    }
    if (reading.isOwn) {
        parts.error = makeOwn(source, channel, options, parts);
    } else {
        const Source whole = {untyped(source), wholeOf(source), reading, {}};
        parts.channel = sampledChannel(whole.channel(static_cast<unsigned int>(channel)),
                                       reading.kernel, reading.outside);
    }
    return parts;
}

}  // namespace volux::resample::detail
