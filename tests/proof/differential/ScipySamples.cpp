// Writes random volumes, positions and the samples of volux_core, for compare_scipy to read.
// Usage: scipy_samples POSITIONS SEED > FILE
// A volume is a record of doubles: width, height, depth, the number of positions, the outside
// value, the voxels with x fastest, x y z of each position, and for each kernel and border its
// samples.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "OutsiderScenes.h"

namespace volux::test {
namespace {

constexpr unsigned int kPositionsPerVolume = 10000;

using Numbers = std::vector<double>;

void write(const Numbers& numbers)
{
    if (std::fwrite(numbers.data(), sizeof(double), numbers.size(), stdout) != numbers.size())
        std::exit(1);
}

template <class I, class B>
void writeSamples(const core::VxImage<double>& image,
                  const std::vector<oracle::Position>& positions, double outside)
{
    Numbers samples;
    for (const oracle::Position& p : positions)
        samples.push_back(sampled<I, B>(image, p, outside));
    write(samples);
}

void writeVolume(Random& random)
{
    const WrappedVolume<double> scene(plainVolume(random));
    const Extents& e = scene.volume.extents;
    const double outside = randomVoxel(random);
    write({static_cast<double>(e.width), static_cast<double>(e.height),
           static_cast<double>(e.depth), kPositionsPerVolume, outside});
    write(scene.volume.block);
    std::vector<oracle::Position> positions;
    for (unsigned int n = 0; n < kPositionsPerVolume; ++n)
        positions.push_back(nearPosition(random, e));
    for (const oracle::Position& p : positions)
        write({p.x, p.y, p.z});
    writeSamples<core::NearestNeighbor, core::Constant>(scene.image, positions, outside);
    writeSamples<core::NearestNeighbor, core::Replication>(scene.image, positions, outside);
    writeSamples<core::Linear, core::Constant>(scene.image, positions, outside);
    writeSamples<core::Linear, core::Replication>(scene.image, positions, outside);
}

}  // namespace
}  // namespace volux::test

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    volux::test::Random random(std::strtoull(argv[2], nullptr, 10));
    const unsigned long positions = std::strtoul(argv[1], nullptr, 10);
    for (unsigned long n = 0; n < positions; n += volux::test::kPositionsPerVolume)
        volux::test::writeVolume(random);
    return 0;
}
