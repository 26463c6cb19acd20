// Makes results of more than 2^31 elements, and compares samples of them with those of volux_core.
// Prints a line for each: the kernel, the elements, the samples compared and those that differed;
// the first of those on the standard error.
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "resample/Expected.h"
#include "support/SparseBlock.h"

namespace volux::test {
namespace {

constexpr unsigned int kExtent = 1300;
constexpr std::size_t kElements = std::size_t{kExtent} * kExtent * kExtent;
constexpr unsigned int kCompared = 2'000'000;

using Image = VxImage<unsigned char>;

// Marks in every page of a thousandth of the rows: the other pages are never there.
void mark(Image& image)
{
    Random random(1);
    for (int n = 0; n < 1300 * 13; ++n) {
        const int y = static_cast<int>(random.below(kExtent));
        const int z = static_cast<int>(random.below(kExtent));
        for (int x = 0; x < static_cast<int>(kExtent); ++x)
            image(x, y, z, 0) = static_cast<unsigned char>(random.bits());
    }
}

// Anywhere, and more often in the last rows and slices.
unsigned int someIndex(Random& random)
{
    return random.below(4) == 0 ? kExtent - 1 - random.below(3) : random.below(kExtent);
}

unsigned int differences(const Image& source, const AffineMap& map, const Image& result,
                         const Options& options)
{
    Random random(2);
    unsigned int different = 0;
    for (unsigned int n = 0; n < kCompared; ++n) {
        const unsigned int i = someIndex(random);
        const unsigned int j = someIndex(random);
        const unsigned int k = someIndex(random);
        const Position p = positionOf(map, i, j, k);
        if (at(result, i, j, k, 0) == gridElement(source, p, 0, options))
            continue;
        if (different++ == 0)
            std::fprintf(stderr, "voxel %u %u %u, %s\n", i, j, k,
                         describedCall(source, p, 0, options).c_str());
    }
    return different;
}

bool compare(const char* name, const Image& source, const AffineMap& map, const Options& options)
{
    const SparseBlock block(kElements);
    if (!block.exists())
        return false;
    Image result;
    result.initializeWithPointer(block.bytes(), kExtent, kExtent, kExtent, 1);
    if (resample::resample(source, gridOf(map, kExtent, kExtent, kExtent), &result, options) !=
        SUCCESS)
        return false;
    std::printf("%s\t%zu\t%u\t%u\n", name, kElements, kCompared,
                differences(source, map, result, options));
    return true;
}

bool compareAll()
{
    const SparseBlock block(kElements);
    if (!block.exists())
        return false;
    Image source;
    source.initializeWithPointer(block.bytes(), kExtent, kExtent, kExtent, 1);
    mark(source);
    const AffineMap shifted = {{{1, 0, 0, 0.25}, {0, 1, 0, -0.5}, {0, 0, 1, 0.75}}};
    return compare("NearestNeighbor, the identity", source, AffineMap(), NearestNeighbor()) &&
           compare("Linear, moved by fractions", source, shifted, Linear());
}

}  // namespace
}  // namespace volux::test

int main()
{
    return volux::test::compareAll() ? EXIT_SUCCESS : EXIT_FAILURE;
}
