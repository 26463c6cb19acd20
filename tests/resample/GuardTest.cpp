// Small sources between two forbidden pages: a vector that reads beside one ends the program.
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
        mprotect(start_ + kPage, kPage, PROT_READ | PROT_WRITE);
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

}  // namespace
}  // namespace volux::test
