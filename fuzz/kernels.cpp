// The three kernels, in every way in which a sampling call can be written, against the oracle: any
// 64 bits as a coordinate, any bytes as voxels.
#include "Input.h"
#include "Scene.h"
#include "support/BitExact.h"
#include "support/Difference.h"
#include "support/SamplingComparison.h"

namespace volux::fuzz {
namespace {

constexpr int kMostSamples = 16;

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
        const oracle::Request<T> request{spelling.form, spelling.kernel, spelling.border,
                                         position,      channel,         value};
        const double expected = oracle::sample(scene.volume, request);
        if (!test::sameBits(sampled, expected))
            throw test::Difference(test::nameOf(spelling) + " gives " + test::withBits(sampled) +
                                   ", not " + test::withBits(expected) + ' ' +
                                   test::described(scene.volume, request));
    }
}

}  // namespace
}  // namespace volux::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    volux::fuzz::Input input(data, size);
    volux::test::withElementType(input.below(7),
                                 [&](auto zero) { volux::fuzz::sample<decltype(zero)>(input); });
    return 0;
}
