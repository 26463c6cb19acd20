#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iomanip>
#include <ios>
#include <sstream>
#include <string>
#include <utility>

#include "support/BitExact.h"
#include "support/ElementTypes.h"
#include "support/OwnPolicies.h"
#include "support/Random.h"
#include "support/RandomScenes.h"
#include "support/SamplingSpellings.h"
#include "support/WrappedVolume.h"

namespace volux::test {
namespace {

using oracle::Position;

constexpr unsigned int kScenes = 200;
constexpr unsigned int kPositionsPerScene = 60;
constexpr unsigned int kSpellingsPerPosition = 12;
constexpr int kFailuresReported = 5;

// VOLUX_TEST_SAMPLES_SCALE multiplies the number of volumes.
unsigned int sceneCount()
{
    const char* const scale = std::getenv("VOLUX_TEST_SAMPLES_SCALE");
    const double factor = scale == nullptr ? 1.0 : std::strtod(scale, nullptr);
    return factor > 0.0 ? static_cast<unsigned int>(kScenes * factor) : kScenes;
}

// Calls through a border of the user's own, which no static object stands for.
template <class T, class Family, class I>
void addPeriodic(Spellings<T>& all)
{
    static PeriodicBorder border;
    const auto add = [&](const char* name, double (*sample)(const Call<T>&)) {
        all.push_back({Family::form, Static<I>::kind, oracle::Border::None, name, sample});
    };
    add("(object, &own)", [](const Call<T>& call) {
        return Family::deduced(call, Static<I>::object(), &border, call.value);
    });
    add("(&object, &own)", [](const Call<T>& call) {
        return Family::deduced(call, &Static<I>::object(), &border, call.value);
    });
}

template <class T, class Family>
void addPeriodicForEachKernel(Spellings<T>& all)
{
    addPeriodic<T, Family, core::NearestNeighbor>(all);
    addPeriodic<T, Family, core::Linear>(all);
    addPeriodic<T, Family, core::Cubic>(all);
}

template <class T>
Spellings<T> periodicSpellings()
{
    Spellings<T> all;
    addPeriodicForEachKernel<T, ValueVoxel>(all);
    addPeriodicForEachKernel<T, ValueReal>(all);
    addPeriodicForEachKernel<T, DoubleValueReal>(all);
    return all;
}

template <class T>
struct PeriodicOutside {
    static std::int64_t wrapped(std::int64_t index, std::int64_t period)
    {
        return ((index % period) + period) % period;
    }
    T operator()(const oracle::Volume<T>& volume, std::int64_t x, std::int64_t y, std::int64_t z,
                 std::int64_t c) const
    {
        const oracle::Extents& e = volume.extents;
        return volume.at(wrapped(x, e.width), wrapped(y, e.height), wrapped(z, e.depth), c);
    }
};

// All that is needed to repeat one comparison, in hexadecimal floating point.
template <class T>
std::string described(const WrappedVolume<T>& scene, const Spelling<T>& spelling,
                      const oracle::Request<T>& request, std::uint64_t seed)
{
    const oracle::Volume<T>& v = scene.volume;
    std::ostringstream text;
    text << std::hexfloat << nameOf(spelling) << " at " << request.position.x << ' '
         << request.position.y << ' ' << request.position.z << " channel " << request.channel
         << " value " << +request.value << "; seed " << seed << ", extents " << v.extents.width
         << ' ' << v.extents.height << ' ' << v.extents.depth << ", strides " << v.strideX << ' '
         << v.strideY << ' ' << v.strideZ << ' ' << v.strideC << ", origin " << v.origin
         << ", spacing " << v.spacing.x << ' ' << v.spacing.y << ' ' << v.spacing.z << ", block";
    for (const T& element : v.block)
        text << ' ' << +element;
    return text.str();
}

// Samples random volumes at random positions in all spellings of a table, and the oracle alike.
template <class T>
class Comparison {
public:
    using Oracle = double (*)(const oracle::Volume<T>&, const oracle::Request<T>&);

    Comparison(Spellings<T> spellings, Oracle expected)
        : spellings_(std::move(spellings)), expected_(expected)
    {
    }

    // Gives the number of samples that were compared.
    int run(std::uint64_t firstSeed)
    {
        const unsigned int scenes = sceneCount();
        for (unsigned int n = 0; n < scenes && failures_ < kFailuresReported; ++n)
            compareScene(firstSeed + n);
        return compared_;
    }

private:
    void compareScene(std::uint64_t seed)
    {
        Random random(seed);
        const WrappedVolume<T> scene(randomVolume<T>(random));
        for (unsigned int n = 0; n < kPositionsPerScene; ++n) {
            const Position voxel = randomPosition(random, scene.volume.extents);
            const Position physical = multiply(voxel, scene.volume.spacing);
            const unsigned int channel =
                random.below(static_cast<unsigned int>(scene.volume.channels));
            const T value = randomElement<T>(random, true);
            for (unsigned int k = 0; k < kSpellingsPerPosition; ++k) {
                const Spelling<T>& spelling = anySpelling(random);
                const Position& p = random.below(2) == 0 ? voxel : physical;
                compare(scene, spelling,
                        {spelling.form, spelling.kernel, spelling.border, p, channel, value}, seed);
            }
        }
    }

    const Spelling<T>& anySpelling(Random& random) const
    {
        return spellings_[random.below(static_cast<unsigned int>(spellings_.size()))];
    }

    void compare(const WrappedVolume<T>& scene, const Spelling<T>& spelling,
                 const oracle::Request<T>& request, std::uint64_t seed)
    {
        const double sampled = spelling.sample(
            {scene.image, request.position, static_cast<int>(request.channel), request.value});
        const double expected = expected_(scene.volume, request);
        ++compared_;
        if (sameBits(sampled, expected))
            return;
        ++failures_;
        ADD_FAILURE() << bitEqual(sampled, expected).message() << " in "
                      << described(scene, spelling, request, seed);
    }

    Spellings<T> spellings_;
    Oracle expected_;
    int compared_ = 0;
    int failures_ = 0;
};

template <class T>
class SamplingDifferential : public ::testing::Test {
protected:
    static void compare(Spellings<T> spellings, typename Comparison<T>::Oracle expected,
                        std::uint64_t firstSeed)
    {
        Comparison<T> comparison(std::move(spellings), expected);
        const int compared = comparison.run(firstSeed);
        EXPECT_GT(compared, 0);
        ::testing::Test::RecordProperty("SamplesCompared", compared);
    }
};
TYPED_TEST_SUITE(SamplingDifferential, ElementTypes, ElementTypeNames);

TYPED_TEST(SamplingDifferential, TheLibrarysPoliciesInEverySpelling)
{
    this->compare(allSpellings<TypeParam>(), oracle::sample<TypeParam>, 1000000);
}

TYPED_TEST(SamplingDifferential, ABorderOfTheUsersOwn)
{
    const auto expected = [](const oracle::Volume<TypeParam>& volume,
                             const oracle::Request<TypeParam>& request) {
        // A bordered form: it rounds, whatever the table calls its border.
        oracle::Request<TypeParam> bordered = request;
        bordered.border = oracle::Border::Replication;
        return oracle::sampleWith(volume, bordered, PeriodicOutside<TypeParam>{});
    };
    this->compare(periodicSpellings<TypeParam>(), expected, 2000000);
}

}  // namespace
}  // namespace volux::test
