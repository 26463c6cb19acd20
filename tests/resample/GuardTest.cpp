// Small sources, and rows of one, between forbidden pages: a vector that reads beside them ends the
// program.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstddef>

#include "Expected.h"

namespace volux::test {
namespace {

// Pages for voxels, a forbidden one before and behind each.
class GuardedPages {
public:
    static constexpr std::size_t kPage = 4096;

    explicit GuardedPages(std::size_t count)
        : bytes_((2 * count + 1) * kPage),
          start_(static_cast<unsigned char*>(
              mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        for (std::size_t at = 0; at < bytes_; at += 2 * kPage)
            EXPECT_EQ(mprotect(start_ + at, kPage, PROT_NONE), 0);
    }
    ~GuardedPages() { munmap(start_, bytes_); }
    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;

    // At the first or at the last bytes of the first page; the next one is two pages on.
    unsigned char* place(std::size_t bytes, bool atEnd) const
    {
        return start_ + kPage + (atEnd ? kPage - bytes : 0);
    }

private:
    std::size_t bytes_;
    unsigned char* start_;
};

template <class T>
void expectBothMaps(const core::VxImage<T>& source, Random& random)
{
    const oracle::Extents extents{source.getWidth(), source.getHeight(), source.getDepth()};
    for (const AffineMap& map : {obliqueMap(random, extents), axisMap(random, extents)})
        expectEveryPolicy(source, gridOf(map, 9, 3, 2), 3);
}

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
        expectBothMaps(source, random);
    }

private:
    Random random{101};
    const GuardedPages page{1};
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
    void compare(unsigned int width, unsigned int strideX, unsigned int channels, bool atEnd)
    {
        const std::size_t elements = std::size_t{strideX} * (width - 1) + channels;
        T* const first = reinterpret_cast<T*>(pages.place(elements * sizeof(T), atEnd));
        core::VxImage<T> source;
        source.initializeWithPointer(first, width, 2, 2, channels);
        constexpr unsigned int kStrideY = 2 * GuardedPages::kPage / sizeof(T);
        source.setImageStride(kStrideY, 2 * kStrideY, 1, strideX);
        for (std::size_t row = 0; row < 4; ++row)
            std::generate_n(first + row * kStrideY, elements,
                            [&] { return randomElement<T>(random, false); });
        expectBothMaps(source, random);
    }

private:
    Random random{102};
    const GuardedPages pages{4};
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
