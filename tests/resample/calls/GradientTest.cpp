#include "volux/resample/Gradient.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "resample/Expected.h"
#include "support/GradientOracle.h"
#include "support/GuardedPages.h"
#include "support/OwnPolicies.h"
#include "support/RandomViews.h"

namespace volux::test {
namespace {

using resample::kAllChannels;
using resample::Positions;
using resample::ReadingAndGradient;
using resample::sampleGradient;
using resample::Units;

bool bitsEqual(const ReadingAndGradient& a, const ReadingAndGradient& b)
{
    return bitEqual(a.value, b.value) && bitEqual(a.x, b.x) && bitEqual(a.y, b.y) &&
           bitEqual(a.z, b.z);
}

std::string shown(const ReadingAndGradient& r)
{
    std::ostringstream text;
    text << std::hexfloat << r.value << " (" << r.x << ' ' << r.y << ' ' << r.z << ')';
    return text.str();
}

std::vector<Position> positionsAround(Random& random, const Extents& extents, std::size_t count)
{
    std::vector<Position> positions;
    for (std::size_t n = 0; n < count; ++n) {
        const oracle::Position p = randomPosition(random, extents);
        positions.push_back({p.x, p.y, p.z});
    }
    return positions;
}

template <class T, class Source>
void expectEveryGradient(const Source& source, const VxImage<T>& image, Random& random,
                         std::size_t count)
{
    const Extents extents{image.getWidth(), image.getHeight(), image.getDepth()};
    const auto positions = positionsAround(random, extents, count);
    const std::size_t channels = image.getChannels();
    forEachPolicyOfCore([&](Interpolator* interpolator, Border* border) {
        const Options options(interpolator, border, insideValue<T>(random));
        std::vector<ReadingAndGradient> results(count * channels);
        ASSERT_EQ(sampleGradient(source, positions.data(), count, Units::VOXELS, kAllChannels,
                                 results.data(), options),
                  SUCCESS);
        for (std::size_t n = 0; n < results.size(); ++n) {
            const Position& p = positions[n / channels];
            const int c = static_cast<int>(n % channels);
            const ReadingAndGradient expected = definition::gradient(image, p, c, options);
            ASSERT_TRUE(bitsEqual(results[n], expected))
                << describedCall(image, p, c, options) << ": " << shown(results[n]) << ", expected "
                << shown(expected);
        }
    });
}

template <class T>
class EveryGradient : public ::testing::Test {
protected:
    Seeded random{331};
};
TYPED_TEST_SUITE(EveryGradient, ElementTypes, ElementTypeNames);

TYPED_TEST(EveryGradient, IsThatOfTheDefinitionInAnyImage)
{
    forEachInstructionSet([this] {
        for (int n = 0; n < 20 && !::testing::Test::HasFatalFailure(); ++n) {
            const WrappedVolume<TypeParam> scene(randomVolume<TypeParam>(this->random));
            expectEveryGradient(scene.image, scene.image, this->random, 100);
        }
    });
}

TYPED_TEST(EveryGradient, IsThatOfTheDefinitionInAnyView)
{
    forEachInstructionSet([this] {
        for (int n = 0; n < 20 && !::testing::Test::HasFatalFailure(); ++n) {
            const Extents extents{this->random.below(9) + 1, this->random.below(8) + 1,
                                  this->random.below(8) + 1};
            const ViewedVolume<TypeParam> volume(this->random, extents, this->random.below(3) + 1,
                                                 true);
            expectEveryGradient(volume.view, volume.image, this->random, 100);
        }
    });
}

// The rows lie at the end or at the beginning of pages of their own.
TYPED_TEST(EveryGradient, ReadsNothingBesideTheRows)
{
    const GuardedPages pages{1, 16};
    forEachInstructionSet([&] {
        for (unsigned int width = 1; width < 12; ++width)
            for (const bool atEnd : {false, true}) {
                View<TypeParam> view(nullptr, width, 4, 4);
                view.strideY = static_cast<std::int64_t>(pages.stride() / sizeof(TypeParam));
                view.strideZ = 4 * view.strideY;
                for (std::size_t row = 16; row-- > 0;) {
                    view.data = pages.place<TypeParam>(width, atEnd, row);
                    for (unsigned int x = 0; x < width; ++x)
                        view.data[x] = randomElement<TypeParam>(this->random, false);
                }
                VxImage<TypeParam> image;
                ViewedVolume<TypeParam>::copy(view, image);
                expectEveryGradient(view, image, this->random, 40);
            }
    });
}

// Reads at a position, in voxels.
template <class T>
double readingAt(const VxImage<T>& image, const Position& p, const Options& options)
{
    double result = 0.0;
    EXPECT_EQ(resample::sample(image, &p, 1, Units::VOXELS, 0, &result, options), SUCCESS);
    return result;
}

template <class T>
double centralDifference(const VxImage<T>& image, const Position& p, double Position::*axis,
                         const Options& options)
{
    constexpr double kStep = 0x1p-16;
    Position before = p;
    Position behind = p;
    before.*axis -= kStep;
    behind.*axis += kStep;
    return (readingAt(image, behind, options) - readingAt(image, before, options)) / (2.0 * kStep);
}

// Between voxels, in and around the image, where each kernel is smooth.
TYPED_TEST(EveryGradient, AgreesWithCentralDifferences)
{
    VxImage<TypeParam> image;
    ASSERT_EQ(image.initialize(6, 5, 4, 1), SUCCESS);
    for (int n = 0; n < 120; ++n)
        image.getBufferPointer()[n] = static_cast<TypeParam>(this->random.below(100));
    forEachPolicyOfCore([&](Interpolator* interpolator, Border* border) {
        const Options options(interpolator, border, 40);
        const double fromWhole = interpolator == kInterpolators[0] ? 0.45 : 0.99;
        for (int n = 0; n < 300; ++n) {
            const auto anywhere = [&] {
                return this->random.below(10) - 2.0 + 0.005 + fromWhole * fraction(this->random);
            };
            const Position p = {anywhere(), anywhere(), anywhere()};
            ReadingAndGradient found = {};
            ASSERT_EQ(sampleGradient(image, &p, 1, Units::VOXELS, 0, &found, options), SUCCESS);
            const auto where = describedCall(image, p, 0, options);
            ASSERT_NEAR(found.x, centralDifference(image, p, &Position::x, options), 1e-6) << where;
            ASSERT_NEAR(found.y, centralDifference(image, p, &Position::y, options), 1e-6) << where;
            ASSERT_NEAR(found.z, centralDifference(image, p, &Position::z, options), 1e-6) << where;
        }
    });
}

TYPED_TEST(EveryGradient, IsTheSameOnAnyNumberOfThreads)
{
    const WrappedVolume<TypeParam> scene(randomVolume<TypeParam>(this->random));
    const auto positions = positionsAround(this->random, scene.volume.extents, 60000);
    forEachPolicyOfCore([&](Interpolator* interpolator, Border* border) {
        Options options(interpolator, border, 3);
        options.threads = 1;
        std::vector<ReadingAndGradient> first(positions.size());
        ASSERT_EQ(sampleGradient(scene.image, positions.data(), positions.size(), Units::VOXELS, 0,
                                 first.data(), options),
                  SUCCESS);
        for (const unsigned int threads : {2U, 3U, 7U}) {
            options.threads = threads;
            std::vector<ReadingAndGradient> results(positions.size());
            ASSERT_EQ(sampleGradient(scene.image, positions.data(), positions.size(), Units::VOXELS,
                                     0, results.data(), options),
                      SUCCESS);
            for (std::size_t n = 0; n < results.size(); ++n)
                ASSERT_TRUE(bitsEqual(results[n], first[n])) << threads << " threads, " << n;
        }
    });
}

TYPED_TEST(EveryGradient, IsByPhysicalUnitsWherePositionsAre)
{
    ViewedVolume<TypeParam> volume(this->random, {5, 4, 3}, 1, false);
    volume.view.spacing = VoxelSize(0.3, 1.5, 49.0);
    for (int n = 0; n < 200; ++n) {
        const Position p = {between(this->random, -1, 2), between(this->random, -1, 7),
                            between(this->random, -50, 200)};
        const Position voxels = {p.x / 0.3, p.y / 1.5, p.z / 49.0};
        ReadingAndGradient found = {};
        ASSERT_EQ(sampleGradient(volume.view, &p, 1, Units::PHYSICAL, 0, &found, Cubic()), SUCCESS);
        ReadingAndGradient expected =
            definition::gradient(volume.image, voxels, 0, Options(Cubic()));
        expected.x /= 0.3;
        expected.y /= 1.5;
        expected.z /= 49.0;
        ASSERT_TRUE(bitsEqual(found, expected)) << describedCall(volume.image, voxels, 0, Cubic());
    }
}

TYPED_TEST(EveryGradient, IsByUnitsOfTheWorldWherePositionsAre)
{
    const Extents extents{5, 4, 3};
    const ViewedVolume<TypeParam> volume(this->random, extents, 1, false);
    const AffineMap map = obliqueMap(this->random, extents);
    const auto& m = map.rows;
    for (int n = 0; n < 200; ++n) {
        const Position p = {between(this->random, -5, 5), between(this->random, -5, 5),
                            between(this->random, -5, 5)};
        ReadingAndGradient found = {};
        ASSERT_EQ(sampleGradient(volume.view, map, &p, 1, 0, &found, Linear()), SUCCESS);
        const Position voxels = positionOf(map, p.x, p.y, p.z);
        const ReadingAndGradient g =
            definition::gradient(volume.image, voxels, 0, Options(Linear()));
        const auto column = [&](int c) { return (m[0][c] * g.x + m[1][c] * g.y) + m[2][c] * g.z; };
        ASSERT_TRUE(bitsEqual(found, {g.value, column(0), column(1), column(2)}))
            << describedCall(volume.image, voxels, 0, Linear()) << ", " << described(map);
    }
}

ReadingAndGradient alongX(const std::vector<float>& voxels, double x, const Options& options)
{
    const auto width = static_cast<unsigned int>(voxels.size());
    const resample::View<const float> view(voxels.data(), width, 1, 1);
    const Position p = {x, 0.0, 0.0};
    ReadingAndGradient result = {};
    EXPECT_EQ(sampleGradient(view, &p, 1, Units::VOXELS, 0, &result, options), SUCCESS);
    return result;
}

TEST(GradientOfLinear, IsThatOfTheCellAboveAWholePosition)
{
    EXPECT_EQ(alongX({1, 3, 9}, 1.0, Linear()).x, 6.0);
    EXPECT_EQ(alongX({1, 3, 9}, 0.999, Linear()).x, 2.0);
}

TEST(GradientOfLinear, IsThatOfTheCellBelowANegativeWholePosition)
{
    const Options constant(Linear(), Constant(), 5);
    EXPECT_EQ(alongX({1, 3}, -1.0, constant).x, 0.0);
    EXPECT_EQ(alongX({1, 3}, -0.999, constant).x, -4.0);
}

TEST(GradientOfCubic, IsExactForAParabola)
{
    std::vector<float> voxels;
    for (int n = 0; n < 8; ++n)
        voxels.push_back(static_cast<float>(n * n));
    for (const double x : {2.0, 2.25, 3.5, 4.0})
        EXPECT_NEAR(alongX(voxels, x, Cubic()).x, 2.0 * x, 1e-12) << x;
}

TEST(GradientBeyondTheEdge, IsZeroFarFromTheImage)
{
    for (const Options& options : {Options(Linear()), Options(Linear(), Constant(), 7)}) {
        EXPECT_EQ(alongX({1, 3, 9}, 20.0, options).x, 0.0);
        EXPECT_EQ(alongX({1, 3, 9}, -20.5, options).x, 0.0);
    }
}

struct Refusal {
    const char* what;
    ErrorType error;
    ErrorType found;
};

TEST(GradientThatIsRefused, ChangesNothingAndSaysWhy)
{
    const short voxels[8] = {};
    const resample::View<const short> view(voxels, 2, 2, 2);
    resample::View<const short> flat = view;
    flat.depth = 0;
    resample::View<const short> noSpacing = view;
    noSpacing.spacing.y = 0.0;
    const Position at[2] = {};
    ReadingAndGradient results[2] = {{1, 2, 3, 4}, {5, 6, 7, 8}};
    PeriodicBorder border;
    const AffineMap zeros = {{{0, 0, 0, 1}, {0, 0, 0, 1}, {0, 0, 0, 1}}};
    constexpr Units kVoxels = Units::VOXELS;
    const Options own(Linear(), &border);
    const Refusal refusals[] = {
        {"no positions", ERR_NULL_POINTER,
         sampleGradient(view, Positions(nullptr), 2, kVoxels, 0, results)},
        {"no results", ERR_NULL_POINTER, sampleGradient(view, at, 2, kVoxels, 0, nullptr)},
        {"no voxels", ERR_NULL_POINTER,
         sampleGradient(resample::View<const short>(), at, 2, kVoxels, 0, results)},
        {"no slices", ERR_INVALID_ARGUMENT, sampleGradient(flat, at, 2, kVoxels, 0, results)},
        {"no short", ERR_INVALID_ARGUMENT,
         sampleGradient(view, at, 2, kVoxels, 9, results, Options(Linear(), Constant(), 0.5))},
        {"no map", ERR_INVALID_ARGUMENT, sampleGradient(view, zeros, at, 2, 9, results)},
        {"own border", ERR_INVALID_ARGUMENT, sampleGradient(view, at, 2, kVoxels, 9, results, own)},
        {"labels", ERR_INVALID_ARGUMENT,
         sampleGradient(view, at, 2, kVoxels, 9, results, Options(resample::Labels()))},
        {"no channel", ERR_INVALID_CHANNEL, sampleGradient(view, at, 2, kVoxels, 1, results)},
        {"no spacing", ERR_INVALID_ARGUMENT,
         sampleGradient(noSpacing, at, 2, Units::PHYSICAL, 0, results)},
        {"overlap", ERR_INVALID_ARGUMENT,
         sampleGradient(view, reinterpret_cast<const Position*>(results), 2, kVoxels, 0, results)}};
    for (const Refusal& refusal : refusals)
        EXPECT_EQ(refusal.found, refusal.error) << refusal.what;
    EXPECT_TRUE(bitsEqual(results[0], {1, 2, 3, 4}) && bitsEqual(results[1], {5, 6, 7, 8}));
}

TEST(GradientOfNoPositions, NeedsNoArrays)
{
    const short voxels[8] = {};
    EXPECT_EQ(sampleGradient(resample::View<const short>(voxels, 2, 2, 2), Positions(nullptr), 0,
                             Units::VOXELS, kAllChannels, nullptr),
              SUCCESS);
}

}  // namespace
}  // namespace volux::test
