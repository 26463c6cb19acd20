#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "support/PeriodicSpellings.h"
#include "support/SamplingComparison.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

constexpr unsigned int kScenes = 200;
constexpr unsigned int kPlacesPerScene = 12;
constexpr int kFailuresReported = 5;

// VOLUX_TEST_SAMPLES_SCALE multiplies the number of volumes.
unsigned int sceneCount()
{
    const char* const scale = std::getenv("VOLUX_TEST_SAMPLES_SCALE");
    const double factor = scale == nullptr ? 1.0 : std::strtod(scale, nullptr);
    return factor > 0.0 ? static_cast<unsigned int>(kScenes * factor) : kScenes;
}

template <class T>
class SamplingDifferential : public ::testing::Test {
protected:
    template <class Oracle>
    static void compare(const Spellings<T>& spellings, std::uint64_t firstSeed)
    {
        int failures = 0;
        Comparison<T, Oracle> comparison(spellings, [&](const std::string& difference) {
            if (++failures <= kFailuresReported)
                ADD_FAILURE() << difference;
        });
        const unsigned int scenes = sceneCount();
        for (unsigned int n = 0; n < scenes && failures < kFailuresReported; ++n)
            comparison.compareScene(firstSeed + n, kPlacesPerScene);
        for (const Meaning<T>& meaning : comparison.meanings()) {
            EXPECT_GT(meaning.compared, 0U);
            EXPECT_EQ(meaning.differentPairs, 0U);
        }
    }
};
TYPED_TEST_SUITE(SamplingDifferential, ElementTypes, ElementTypeNames);

TYPED_TEST(SamplingDifferential, TheLibrarysPoliciesInEverySpelling)
{
    this->template compare<LibraryOracle>(allSpellings<TypeParam>(), 1000000);
}

TYPED_TEST(SamplingDifferential, ABorderOfTheUsersOwn)
{
    this->template compare<PeriodicOracle>(periodicSpellings<TypeParam>(), 2000000);
}

}  // namespace
}  // namespace volux::test
