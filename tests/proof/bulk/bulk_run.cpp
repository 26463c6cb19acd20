// Compares calls on large random volumes with one call of volux_core for each sample, for so many
// seconds; grids whose edge ends, with that and the value outside. Every volume draws whether it is
// an image or a view with strides of either sign, and every call its map, kernel, border, type of
// results, instruction set and number of threads.
// Usage: bulk_run SECONDS SEED
// Prints the number of volumes, then a line for each operation, element type, kernel and border:
// how many samples were compared, and how many differed.
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "resample/Expected.h"
#include "support/RandomViews.h"

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

// A large source, and an image of the same voxels: its own memory, or what a view shows.
template <class T>
class Source {
public:
    explicit Source(Random& random)
    {
        const Extents e{random.between(20, 150), random.between(20, 150), random.between(10, 60)};
        const unsigned int channels = random.between(1, 2);
        if (random.below(2) == 0)
            wrapped_.emplace(randomVolume<T>(random, randomLayout(random, e, channels)));
        else
            viewed_.emplace(random, e, channels, random.below(8) == 0);
    }

    const VxImage<T>& image() const { return wrapped_ ? wrapped_->image : viewed_->image; }
    View<const T> view() const { return wrapped_ ? resample::viewOf(image()) : viewed_->view; }
    Extents extents() const
    {
        const View<const T> all = view();
        return {all.width, all.height, all.depth};
    }

private:
    std::optional<WrappedVolume<T>> wrapped_;
    std::optional<ViewedVolume<T>> viewed_;
};

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

template <class R, class T>
std::string into()
{
    if constexpr (std::is_same_v<R, T>)
        return "";
    return std::is_same_v<R, float> ? " into float" : " into double";
}

// What a result of type R keeps of a sample.
template <class R, class T, class Element, class Reading>
R kept(const Element& element, const Reading& reading)
{
    if constexpr (std::is_same_v<R, T>)
        return element();
    else
        return static_cast<R>(reading());
}

template <class T>
class Calls {
public:
    explicit Calls(std::uint64_t seed) : seed_(seed), random_(seed), source_(random_) {}

    void compareCalls()
    {
        for (int n = 0; n < kCallsPerVolume; ++n) {
            const unsigned int kind = random_.below(4);
            if (kind < 2)
                compareCall<T>();
            else if (kind == 2)
                compareCall<float>();
            else
                compareCall<double>();
        }
    }

private:
    template <class R>
    void compareCall()
    {
        if (random_.below(4) == 0)
            comparePositions<R>();
        else
            compareGrid<R>();
    }

    template <class R>
    void compareGrid()
    {
        std::string operation;
        const AffineMap map = someMap(random_, source_.extents(), operation);
        const Grid grid =
            gridOf(map, random_.between(1, 600), random_.between(1, 40), random_.between(1, 8));
        begin("resample, " + operation + into<R, T>());
        core::VxImage<R> result;
        if (resample::resample(source_.view(), grid, &result, options_) != core::SUCCESS)
            return differs("a call was refused");
        for (unsigned int k = 0; k < grid.depth; ++k)
            for (unsigned int j = 0; j < grid.height; ++j)
                for (unsigned int i = 0; i < grid.width; ++i)
                    for (int c = 0; c < static_cast<int>(result.getChannels()); ++c)
                        compareVoxel(at(result, i, j, k, static_cast<unsigned int>(c)),
                                     positionOf(map, i, j, k), c);
    }

    template <class R>
    void comparePositions()
    {
        const bool isMapped = random_.below(2) == 0;
        std::vector<Position> positions;
        for (unsigned int n = random_.between(1, 20000); n > 0; --n) {
            const oracle::Position p = randomPosition(random_, source_.extents());
            positions.push_back({p.x, p.y, p.z});
        }
        const AffineMap map = isMapped ? obliqueMap(random_, source_.extents()) : AffineMap();
        begin((isMapped ? "sample by a map" : "sample") + into<R, T>());
        const View<const T> source = source_.view();
        std::vector<R> results(positions.size() * source.channels);
        const int all = resample::kAllChannels;
        const core::ErrorType code =
            isMapped ? resample::sample(source, map, positions.data(), positions.size(), all,
                                        results.data(), options_)
                     : resample::sample(source, positions.data(), positions.size(),
                                        resample::Units::VOXELS, all, results.data(), options_);
        if (code != core::SUCCESS)
            return differs("a call was refused");
        std::size_t next = 0;
        for (const Position& from : positions) {
            const Position p = isMapped ? positionOf(map, from.x, from.y, from.z) : from;
            for (int c = 0; c < static_cast<int>(source.channels); ++c)
                compareSample(results[next++], p, c);
        }
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

    template <class R>
    void compareVoxel(R result, const Position& p, int c)
    {
        compare(result,
                kept<R, T>([&] { return gridElement(source_.image(), p, c, options_); },
                           [&] { return gridReading(source_.image(), p, c, options_); }),
                p, c);
    }

    template <class R>
    void compareSample(R result, const Position& p, int c)
    {
        compare(result,
                kept<R, T>([&] { return element(source_.image(), p, c, options_); },
                           [&] { return reading(source_.image(), p, c, options_); }),
                p, c);
    }

    template <class R>
    void compare(R result, R expected, const Position& p, int c)
    {
        ++count_->compared;
        if (!sameBits(result, expected))
            differs(withBits(result) + ", not " + withBits(expected) + ", " +
                    describedCall(source_.image(), p, c, options_) + ", of a " +
                    described(source_.view()));
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
    const Source<T> source_;
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
