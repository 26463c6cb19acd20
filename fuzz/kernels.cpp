// The three kernels, in every way in which a sampling call can be written, against the oracle: any
// 64 bits as a coordinate, any bytes as voxels.
#include <array>
#include <cmath>

#include "Input.h"
#include "support/BitExact.h"
#include "support/Difference.h"
#include "support/ElementTypes.h"
#include "support/SamplingSpellings.h"
#include "support/WrappedVolume.h"

namespace volux::fuzz {
namespace {

namespace oracle = test::oracle;

constexpr int kMostSamples = 16;

/// A whole number near the volume, one with a fraction of 1/256, a neighbour of a half, or any
/// bits.
double someCoordinate(Input& input)
{
    const unsigned int kind = input.below(4);
    if (kind == 0)
        return input.raw<double>();
    const double whole = static_cast<int>(input.below(16)) - 5;
    if (kind == 1)
        return whole;
    if (kind == 2)
        return whole + input.below(256) / 256.0;
    return std::nextafter(whole + 0.5 * input.below(2), input.flag() ? 1e300 : -1e300);
}

oracle::Position somePosition(Input& input)
{
    const double x = someCoordinate(input);
    const double y = someCoordinate(input);
    return {x, y, someCoordinate(input)};
}

/// Any that an image takes.
double someSpacing(Input& input)
{
    const unsigned int kind = input.below(4);
    const double length = kind == 0 ? input.raw<double>() : 0.5 * kind;
    return length <= 0.0 ? 1.0 : length;
}

oracle::Position someSpacings(Input& input)
{
    const double x = someSpacing(input);
    const double y = someSpacing(input);
    return {x, y, someSpacing(input)};
}

/// The axes in any order, with unused elements in between or without.
template <class T>
void layOut(oracle::Volume<T>& v, Input& input)
{
    std::array<std::int64_t*, 4> strides{&v.strideC, &v.strideX, &v.strideY, &v.strideZ};
    std::array<std::int64_t, 4> extents{v.channels, v.extents.width, v.extents.height,
                                        v.extents.depth};
    const unsigned int turn = input.below(4);
    const std::int64_t gap = input.below(3);
    std::int64_t next = 1;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t axis = (i + turn) % 4;
        *strides[axis] = next;
        next = next * extents[axis] + gap;
    }
}

template <class T>
oracle::Volume<T> someVolume(Input& input)
{
    oracle::Volume<T> v;
    v.extents = {1 + input.below(5), 1 + input.below(5), 1 + input.below(5)};
    v.channels = 1 + input.below(2);
    layOut(v, input);
    v.spacing = someSpacings(input);
    const std::int64_t last = v.strideX * (v.extents.width - 1) +
                              v.strideY * (v.extents.height - 1) +
                              v.strideZ * (v.extents.depth - 1) + v.strideC * (v.channels - 1);
    v.block.resize(static_cast<std::size_t>(last + 1));
    const std::uint64_t seed = input.raw<std::uint8_t>();
    for (std::size_t i = 0; i < v.block.size(); ++i)
        v.block[i] = test::someValue<T>(seed + i);
    for (unsigned int own = input.below(16); own > 0; --own)
        v.block[input.below(256) % v.block.size()] = input.raw<T>();
    return v;
}

template <class T>
void sample(Input& input)
{
    static const test::Spellings<T> spellings = test::allSpellings<T>();
    const test::WrappedVolume<T> scene(someVolume<T>(input));
    for (int i = 0; i < kMostSamples && !input.empty(); ++i) {
        const auto& spelling = spellings[input.raw<std::uint16_t>() % spellings.size()];
        const oracle::Position position = somePosition(input);
        const std::int64_t channel = input.below(2) % scene.volume.channels;
        const T value = input.raw<T>();
        const double sampled =
            spelling.sample({scene.image, position, static_cast<int>(channel), value});
        const double expected = oracle::sample<T>(
            scene.volume,
            {spelling.form, spelling.kernel, spelling.border, position, channel, value});
        if (!test::sameBits(sampled, expected))
            throw test::Difference(test::nameOf(spelling) + " gives " + test::withBits(sampled) +
                                   ", not " + test::withBits(expected));
    }
}

}  // namespace
}  // namespace volux::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    volux::fuzz::Input input(data, size);
    volux::fuzz::withElementType(input.below(7),
                                 [&](auto zero) { volux::fuzz::sample<decltype(zero)>(input); });
    return 0;
}
