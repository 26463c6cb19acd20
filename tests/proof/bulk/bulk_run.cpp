// Compares calls on large random volumes with one call of volux_core for each sample, for so many
// seconds; grids whose edge ends, with that and the value outside. Every call draws its map,
// kernel, border, instruction set and number of threads.
// Usage: bulk_run SECONDS SEED
// Prints the number of volumes, then a line for each operation, element type, kernel and border:
// how many samples were compared, and how many differed.
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "resample/Expected.h"

namespace volux::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kCallsPerVolume = 24;
constexpr int kDifferencesPrinted = 5;

struct Count {
    unsigned long long compared = 0;
    unsigned long long different = 0;
};

std::map<std::string, Count> counts;

template <class T>
Volume<T> largeVolume(Random& random)
{
    const Extents e{random.between(20, 150), random.between(20, 150), random.between(10, 60)};
    return randomVolume<T>(random, randomLayout(random, e, random.between(1, 2)));
}

// Replication that extends is a border of its own.
constexpr std::array<const char*, 3> kNames{"Constant", "Replication", "Replication, extending"};

Options someOptions(Random& random, unsigned int& kernel, unsigned int& border)
{
    constexpr std::array<unsigned int, 6> threads{0, 1, 2, 3, 7, 16};
    kernel = random.below(3);
    border = random.below(3);
    Options options(kInterpolators[kernel], kBorders[border == 0 ? 0 : 1],
                    insideValue<unsigned char>(random));
    options.edgeExtends = border == 2;
    options.overflow = random.below(3) == 0 ? Overflow::WRAP : Overflow::SATURATE;
    options.threads = anyOf(random, threads);
    return options;
}

AffineMap someMap(Random& random, const Extents& extents, std::string& name)
{
    switch (random.below(8)) {
        case 0:
            name = "ties and whole positions";
            return halfMap(random, extents);
        case 1:
            name = "far away";
            return hugeMap(random, extents);
        case 2:
        case 3:
        case 4:
            name = "along the axes";
            return axisMap(random, extents);
        default:
            name = "oblique";
            return obliqueMap(random, extents, random.below(2) == 0 ? 0.3 : 1.0);
    }
}

template <class T>
class Calls {
public:
    explicit Calls(std::uint64_t seed) : seed_(seed), random_(seed), scene_(largeVolume<T>(random_))
    {
    }

    void compareCalls()
    {
        for (int n = 0; n < kCallsPerVolume; ++n) {
            if (random_.below(4) == 0)
                comparePositions();
            else
                compareGrid();
        }
    }

private:
    void compareGrid()
    {
        std::string operation;
        const AffineMap map = someMap(random_, scene_.volume.extents, operation);
        const Grid grid =
            gridOf(map, random_.between(1, 600), random_.between(1, 40), random_.between(1, 8));
        begin("resample, " + operation);
        core::VxImage<T> result;
        if (resample::resample(scene_.image, grid, &result, options_) != core::SUCCESS)
            return differs("a call was refused");
        for (unsigned int k = 0; k < grid.depth; ++k)
            for (unsigned int j = 0; j < grid.height; ++j)
                for (unsigned int i = 0; i < grid.width; ++i)
                    for (int c = 0; c < static_cast<int>(result.getChannels()); ++c)
                        compareVoxel(at(result, i, j, k, static_cast<unsigned int>(c)),
                                     positionOf(map, i, j, k), c);
    }

    void comparePositions()
    {
        std::vector<Position> positions;
        for (unsigned int n = random_.between(1, 20000); n > 0; --n) {
            const oracle::Position p = randomPosition(random_, scene_.volume.extents);
            positions.push_back({p.x, p.y, p.z});
        }
        begin("sample");
        const auto channels = static_cast<int>(scene_.image.getChannels());
        std::vector<T> results(positions.size() * scene_.image.getChannels());
        if (resample::sample(scene_.image, positions.data(), positions.size(),
                             resample::Units::VOXELS, resample::kAllChannels, results.data(),
                             options_) != core::SUCCESS)
            return differs("a call was refused");
        std::size_t next = 0;
        for (const Position& p : positions)
            for (int c = 0; c < channels; ++c)
                compare(results[next++], element(scene_.image, p, c, options_), p, c);
    }

    void begin(const std::string& operation)
    {
        unsigned int kernel = 0;
        unsigned int border = 0;
        options_ = someOptions(random_, kernel, border);
        instructions_ =
            chooseInstructionSet([&](unsigned int count) { return random_.below(count); });
        kind_ = operation + '\t' + elementTypeName<T>() + '\t' + kKernelNames[kernel] + '\t' +
                kNames[border];
        count_ = &counts[kind_];
    }

    void compareVoxel(T result, const Position& p, int c)
    {
        compare(result, gridElement(scene_.image, p, c, options_), p, c);
    }

    void compare(T result, T expected, const Position& p, int c)
    {
        ++count_->compared;
        if (!sameBits(result, expected))
            differs(withBits(result) + ", not " + withBits(expected) + ", " +
                    describedCall(scene_.image, p, c, options_));
    }

    void differs(const std::string& how)
    {
        static int printed = 0;
        ++count_->different;
        if (++printed <= kDifferencesPrinted)
            std::fprintf(stderr, "seed %llu, %s, %s: %s\n", static_cast<unsigned long long>(seed_),
                         kind_.c_str(), instructions_.c_str(), how.c_str());
    }

    const std::uint64_t seed_;
    Random random_;
    const WrappedVolume<T> scene_;
    Options options_;
    std::string instructions_;
    std::string kind_;
    Count* count_ = nullptr;
};

// The seed chooses the element type as well, so that it alone repeats a volume.
void compareVolume(std::uint64_t seed)
{
    withElementType(seed, [&](auto zero) { Calls<decltype(zero)>(seed).compareCalls(); });
}

void run(double seconds, std::uint64_t seed)
{
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(seconds));
    unsigned long long volumes = 0;
    for (; Clock::now() < end; ++volumes)
        compareVolume(seed + volumes);
    std::printf("volumes\t%llu\n", volumes);
    for (const auto& [kind, count] : counts)
        std::printf("%s\t%llu\t%llu\n", kind.c_str(), count.compared, count.different);
}

}  // namespace
}  // namespace volux::test

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    volux::test::run(std::strtod(argv[1], nullptr), std::strtoull(argv[2], nullptr, 10));
    return 0;
}
