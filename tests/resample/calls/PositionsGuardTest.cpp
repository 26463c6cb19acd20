// Small sources, positions and results of samples and gradients between forbidden pages: a vector
// that reads or writes beside them ends the program.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "resample/Expected.h"
#include "support/GradientOracle.h"
#include "support/GuardedPages.h"
#include "support/RandomViews.h"
#include "volux/resample.h"

namespace volux::test {
namespace {

using resample::Positions;
using resample::ReadingAndGradient;
using resample::Units;

template <class T>
class GuardedSamples : public ::testing::Test {
protected:
    // A source without gaps, so that its last row ends where forbidden memory begins.
    void compare(const Extents& extents, unsigned int count, int stride, bool atEnd, int cell = 0)
    {
        const LastWords words("seed 133, extents " + std::to_string(extents.width) + ' ' +
                              std::to_string(extents.height) + ' ' + std::to_string(extents.depth) +
                              ", " + std::to_string(count) + " positions, stride " +
                              std::to_string(stride));
        const std::size_t voxels = std::size_t{extents.width} * extents.height * extents.depth;
        const View<T> source(sources.place<T>(voxels, atEnd), extents.width, extents.height,
                             extents.depth);
        std::generate_n(source.data, voxels, [&] { return randomElement<T>(random, false); });
        VxImage<T> image;
        ViewedVolume<T>::copy(source, image);
        const Positions positions = place(extents, count, stride, atEnd, cell);
        forEachPolicy([&](Interpolator* interpolator, Border* border) {
            const Options options(interpolator, border, 3);
            compareSamples(source, image, positions, count, options, atEnd);
            if (interpolator != &resample::LABELS)
                compareGradients(source, image, positions, count, options, atEnd);
        });
    }

private:
    // Between the voxels of a cell, the last of which is 1, the one before 2; 0: anywhere.
    double coordinate(unsigned int extent, int cell)
    {
        return cell == 0 ? randomCoordinate(random, extent)
                         : std::max(static_cast<int>(extent) - 1 - cell, 0) + fraction(random);
    }

    Positions place(const Extents& extents, unsigned int count, int stride, bool atEnd, int cell)
    {
        const std::size_t span = static_cast<std::size_t>(std::abs(stride)) * (count - 1) + 1;
        const unsigned int sizes[] = {extents.width, extents.height, extents.depth};
        double* first[3] = {};
        for (std::size_t n = 0; n < 3; ++n) {
            double* const block = coordinates.place<double>(span, atEnd, n);
            std::generate_n(block, span, [&] { return coordinate(sizes[n], cell); });
            first[n] = stride < 0 ? block + span - 1 : block;
        }
        return {first[0], first[1], first[2], stride};
    }

    static Position at(const Positions& positions, std::int64_t n)
    {
        const std::int64_t from = n * positions.stride;
        return {positions.x[from], positions.y[from], positions.z[from]};
    }

    void compareSamples(const View<T>& source, const VxImage<T>& image, const Positions& positions,
                        unsigned int count, const Options& options, bool atEnd)
    {
        T* const found = results.place<T>(count, atEnd);
        ASSERT_EQ(resample::sample(source, positions, count, Units::VOXELS, 0, found, options),
                  SUCCESS);
        for (unsigned int n = 0; n < count; ++n)
            ASSERT_TRUE(bitEqual(found[n], element(image, at(positions, n), 0, options)))
                << describedCall(image, at(positions, n), 0, options);
    }

    void compareGradients(const View<T>& source, const VxImage<T>& image,
                          const Positions& positions, unsigned int count, const Options& options,
                          bool atEnd)
    {
        auto* const found = results.place<ReadingAndGradient>(count, atEnd);
        ASSERT_EQ(
            resample::sampleGradient(source, positions, count, Units::VOXELS, 0, found, options),
            SUCCESS);
        for (unsigned int n = 0; n < count; ++n) {
            const ReadingAndGradient expected =
                definition::gradient(image, at(positions, n), 0, options);
            ASSERT_TRUE(bitEqual(found[n].value, expected.value) &&
                        bitEqual(found[n].x, expected.x) && bitEqual(found[n].y, expected.y) &&
                        bitEqual(found[n].z, expected.z))
                << describedCall(image, at(positions, n), 0, options);
        }
    }

    Seeded random{133};
    const GuardedPages sources{2};
    const GuardedPages coordinates{1, 3};
    const GuardedPages results{1};
};
TYPED_TEST_SUITE(GuardedSamples, ElementTypes, ElementTypeNames);

// Every extent along each axis, beside every one along the next.
TYPED_TEST(GuardedSamples, ReadAndWriteInsideAloneWhateverTheExtents)
{
    forEachInstructionSet([this] {
        for (unsigned int n = 0; n < 81; ++n) {
            const unsigned int width = n % 9;
            const unsigned int height = n / 9;
            const Extents extents{width + 1, height + 1, (2 * width + height) % 9 + 1};
            this->compare(extents, n % 9 + 1, 1, n % 2 == 0);
            this->compare(extents, 8, 1, true, n % 2 == 0 ? 1 : 2);  // whole vectors
        }
    });
}

// Positions and results, which do not ask for the type of the voxels.
using GuardedArrays = GuardedSamples<short>;

TEST_F(GuardedArrays, AreReadAndWrittenInsideAloneHoweverLong)
{
    forEachInstructionSet([this] {
        for (unsigned int count = 1; count <= 40; ++count) {
            this->compare({4, 3, 2}, count, 1, true);
            if (count % 3 == 0)
                this->compare({4, 3, 2}, count, count % 2 == 0 ? -1 : 3, count % 2 != 0);
        }
    });
}

}  // namespace
}  // namespace volux::test
