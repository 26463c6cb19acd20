// Small sources, and rows of one, between forbidden pages: a vector that reads beside them ends the
// program.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

#include "resample/Expected.h"
#include "support/GuardedPages.h"
#include "support/LastWords.h"

namespace volux::test {
namespace {

template <class T>
class Guarded : public ::testing::Test {
protected:
    // One row alone, two rows in one block, five: all of them on one page.
    void compare(unsigned int width, unsigned int height, unsigned int channels, bool atEnd)
    {
        const Layout layout = interleaved(width, height, 1, channels);
        T* const voxels = block(layout.span(), atEnd, 0);
        compare(voxels, layout);
    }

    // Two rows in each of two slices, each on a page of its own.
    void compareRows(unsigned int width, unsigned int strideX, unsigned int channels, bool atEnd)
    {
        const auto strideY = static_cast<unsigned int>(pages.stride() / sizeof(T));
        const Layout layout{"paged", {width, 2, 2}, channels, strideX, strideY, 2 * strideY, 1};
        T* first = nullptr;
        for (std::size_t row = 4; row-- > 0;)
            first = block(std::size_t{strideX} * (width - 1) + channels, atEnd, row);
        compare(first, layout);
    }

private:
    T* block(std::size_t elements, bool atEnd, std::size_t room)
    {
        T* const first = pages.place<T>(elements, atEnd, room);
        std::generate_n(first, elements, [&] { return randomElement<T>(random, false); });
        return first;
    }

    void compare(T* first, const Layout& layout)
    {
        VxImage<T> source;
        wrap(first, layout, &source);
        const LastWords words("seed 101, source: " + ::testing::PrintToString(fieldsOf(source)));
        for (const AffineMap& map :
             {obliqueMap(random, layout.extents), axisMap(random, layout.extents), shift()})
            expectEveryPolicy(source, gridOf(map, 9, 3, 2), 3);
    }

    // By less than a voxel, there or back: the neighbours of a column are next to those before.
    AffineMap shift()
    {
        const double offset = random.below(8) / 8.0;
        if (random.below(2) == 0)
            return {{{1, 0, 0, offset}, {0, 1, 0, 0.5}, {0, 0, 1, 0.5}}};
        return {{{-1, 0, 0, 8 + offset}, {0, 1, 0, 0.5}, {0, 0, 1, 0.5}}};
    }

    Seeded random{101};
    const GuardedPages pages{1, 4};
};
TYPED_TEST_SUITE(Guarded, ElementTypes, ElementTypeNames);

TYPED_TEST(Guarded, SourcesAreReadInsideAlone)
{
    forEachInstructionSet([this] {
        for (unsigned int width = 1; width < 12; ++width)
            for (const unsigned int height : {1U, 2U, 5U})
                for (const unsigned int channels : {1U, 3U})
                    for (const bool atEnd : {false, true})
                        this->compare(width, height, channels, atEnd);
    });
}

template <class T>
class GuardedRows : public Guarded<T> {
};
TYPED_TEST_SUITE(GuardedRows, ElementTypes, ElementTypeNames);

TYPED_TEST(GuardedRows, AreReadInsideAlone)
{
    forEachInstructionSet([this] {
        for (unsigned int width = 1; width < 12; ++width)
            for (const unsigned int channels : {1U, 2U, 3U})
                for (const unsigned int gap : {0U, 1U})
                    for (const bool atEnd : {false, true})
                        this->compareRows(width, channels + gap, channels, atEnd);
    });
}

}  // namespace
}  // namespace volux::test
