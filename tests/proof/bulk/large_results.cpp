// Makes results of more than 2^31 elements, and compares samples of them with the module's.
// Prints a line for each: the kernel, the elements, the samples compared and those that differed.
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

using Image = core::VxImage<unsigned char>;

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
        const unsigned char got =
            result(static_cast<int>(i), static_cast<int>(j), static_cast<int>(k), 0);
        different += got == element(source, positionOf(map, i, j, k), 0, options) ? 0U : 1U;
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
        core::SUCCESS)
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
    return compare("NearestNeighbor, the identity", source, AffineMap(), core::NearestNeighbor()) &&
           compare("Linear, moved by fractions", source, shifted, core::Linear());
}

}  // namespace
}  // namespace volux::test

int main()
{
    return volux::test::compareAll() ? EXIT_SUCCESS : EXIT_FAILURE;
}
