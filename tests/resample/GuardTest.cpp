// Small sources, and rows of one, between forbidden pages: a vector that reads beside them ends the
// program.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstddef>

#include "Expected.h"

namespace volux::test {
namespace {

class GuardedPage {
public:
    static constexpr std::size_t kPage = 4096;

    GuardedPage()
        : start_(static_cast<unsigned char*>(
              mmap(nullptr, 3 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        EXPECT_EQ(mprotect(start_ + kPage, kPage, PROT_READ | PROT_WRITE), 0);
    }
    ~GuardedPage() { munmap(start_, 3 * kPage); }
    GuardedPage(const GuardedPage&) = delete;
    GuardedPage& operator=(const GuardedPage&) = delete;

    // At the first or at the last bytes of the page.
    unsigned char* place(std::size_t bytes, bool atEnd) const
    {
        return start_ + kPage + (atEnd ? kPage - bytes : 0);
    }

private:
    unsigned char* start_;
};

template <class T>
class Guarded : public ::testing::Test {
protected:
    void compare(unsigned int width, unsigned int height, unsigned int channels, bool atEnd)
    {
        const std::size_t count = std::size_t{width} * height * channels;
        T* const voxels = reinterpret_cast<T*>(page.place(count * sizeof(T), atEnd));
        std::generate_n(voxels, count, [&] { return randomElement<T>(random, false); });
        core::VxImage<T> source;
        source.initializeWithPointer(voxels, width, height, 1, channels);
        const oracle::Extents extents{width, height, 1};
        for (const AffineMap& map : {obliqueMap(random, extents), axisMap(random, extents)})
            expectEveryPolicy(source, gridOf(map, 9, 3, 2), 3);
    }

private:
    Random random{101};
    const GuardedPage page;
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

// Two rows in each of two slices, each on a page of its own between forbidden ones.
template <class T>
class GuardedRows : public ::testing::Test {
protected:
    static constexpr std::size_t kPage = GuardedPage::kPage;

    GuardedRows()
        : start_(static_cast<unsigned char*>(
              mmap(nullptr, 9 * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        for (std::size_t page = 0; page < 9; page += 2)
            EXPECT_EQ(mprotect(start_ + page * kPage, kPage, PROT_NONE), 0);
    }
    ~GuardedRows() override { munmap(start_, 9 * kPage); }

    void compare(unsigned int width, unsigned int strideX, unsigned int channels, bool atEnd)
    {
        const std::size_t elements = std::size_t{strideX} * (width - 1) + channels;
        T* const first =
            reinterpret_cast<T*>(start_ + kPage) + (atEnd ? kPage / sizeof(T) - elements : 0);
        core::VxImage<T> source;
        source.initializeWithPointer(first, width, 2, 2, channels);
        constexpr unsigned int kStrideY = 2 * kPage / sizeof(T);
        source.setImageStride(kStrideY, 2 * kStrideY, 1, strideX);
        for (std::size_t row = 0; row < 4; ++row)
            std::generate_n(first + row * kStrideY, elements,
                            [&] { return randomElement<T>(random_, false); });
        const oracle::Extents extents{width, 2, 2};
        for (const AffineMap& map : {obliqueMap(random_, extents), axisMap(random_, extents)})
            expectEveryPolicy(source, gridOf(map, 9, 3, 2), 3);
    }

private:
    Random random_{102};
    unsigned char* start_;
};
TYPED_TEST_SUITE(GuardedRows, ElementTypes, ElementTypeNames);

TYPED_TEST(GuardedRows, AreReadInsideAlone)
{
    forEachInstructionSet([this] {
        for (unsigned int width = 1; width < 12; ++width)
            for (const unsigned int channels : {1U, 2U, 3U})
                for (const unsigned int gap : {0U, 1U})
                    for (const bool atEnd : {false, true})
                        this->compare(width, channels + gap, channels, atEnd);
    });
}

}  // namespace
}  // namespace volux::test
