// Takes every float there is, or every Nth, through the index rules, the conversions and the cubic
// kernel, and compares with the oracle.
// Usage: exhaustion EVERY FIRST THREADS
// Prints a line for each: what it is, floats compared, floats that differed; the first of those on
// the standard error.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "support/BitExact.h"
#include "support/ElementTypes.h"
#include "support/SamplingOracle.h"
#include "volux/core.h"

namespace volux::test {
namespace {

struct Tally {
    std::uint64_t compared = 0;
    std::uint64_t different = 0;
    double example = 0.0;  // the first that differed

    void add(bool same, double v)
    {
        ++compared;
        if (!same && different++ == 0)
            example = v;
    }

    void add(const Tally& other)
    {
        if (different == 0)
            example = other.example;
        compared += other.compared;
        different += other.different;
    }
};

const std::array<double, 64> kVoxels = [] {
    std::array<double, 64> voxels{};
    for (std::size_t n = 0; n < voxels.size(); ++n)
        voxels[n] = someValue<double>(n);
    return voxels;
}();

// The voxel at an index: by its last two bits on each axis, so that any four in a row differ.
double voxelAt(std::int64_t x, std::int64_t y, std::int64_t z)
{
    return kVoxels[static_cast<std::size_t>((x & 3) | (y & 3) << 2 | (z & 3) << 4)];
}

using BorderTable = core::Border::border_t<core::Border, core::Border::Empty>;

// A border that watches whether it is asked for what it expects: a box of neighbours, x fastest.
class Watcher : public core::Border {
public:
    // The neighbours along one axis, from `first` on; they wrap as 32 bits do.
    struct Axis {
        std::int64_t first;
        unsigned int count;
    };

    void expect(const Axis& x, const Axis& y, const Axis& z)
    {
        axes_ = {{x, y, z}};
        next_ = {0, 0, 0};
        asked_ = 0;
        strayed_ = 0;
    }

    bool sawAll() const
    {
        return strayed_ == 0 && asked_ == axes_[0].count * axes_[1].count * axes_[2].count;
    }

private:
    struct Table : BorderTable {
        using BorderTable::fetch;
        double fetch(core::Border& border, const core::VxImage<double>&, int x, int y, int z,
                     unsigned int, double, unsigned int, unsigned int, unsigned int) override
        {
            static_cast<Watcher&>(border).see(x, y, z);
            return voxelAt(x, y, z);
        }
    };

    void see(int x, int y, int z)
    {
        ++asked_;
        strayed_ |= offBy(0, x) | offBy(1, y) | offBy(2, z);
        for (std::size_t axis = 0; axis < 3 && ++next_[axis] == axes_[axis].count; ++axis)
            next_[axis] = 0;
    }

    unsigned int offBy(std::size_t axis, int index) const
    {
        return static_cast<unsigned int>(index) -
               (static_cast<unsigned int>(axes_[axis].first) + next_[axis]);
    }

    BorderTable& get() override { return table_; }

    std::array<Axis, 3> axes_{};
    std::array<unsigned int, 3> next_{};
    unsigned int asked_ = 0;
    unsigned int strayed_ = 0;
    Table table_;
};

// An interpolator that gives the number it was given.
struct Giver : core::Interpolator {
    double result = 0.0;

    template <class T, class B>
    double operator()(const core::VxImage<T>&, double, double, double, unsigned int, const B&, T)
    {
        return result;
    }

private:
    using BaseTable =
        core::Interpolator::interpolator_t<core::Interpolator, core::Interpolator::Empty>;
    BaseTable& get() override { return table_; }

    core::Interpolator::interpolator_t<Giver, core::Interpolator> table_;
};

template <class Kernel>
double sampled(Kernel kernel, const core::VxImage<double>& image, core::Border& border, double x,
               double y, double z)
{
    return static_cast<double>(
        kernel.template operator()<double, core::Border*>(image, x, y, z, 0, &border, 0.0));
}

// In an image without a voxel every neighbour is outside, so that the border is asked for it. The
// float is the position along all three axes.
class Indices {
public:
    Tally nearest;
    Tally linear;

    void take(double v)
    {
        const Watcher::Axis one{oracle::nearestIndex(v), 1};
        border_.expect(one, one, one);
        sampled(core::NearestNeighbor(), empty_, border_, v, v, v);
        nearest.add(border_.sawAll(), v);

        const Watcher::Axis two{oracle::lowerIndex(v), 2};
        border_.expect(two, two, two);
        sampled(core::Linear(), empty_, border_, v, v, v);
        linear.add(border_.sawAll(), v);
    }

private:
    Watcher border_;
    core::VxImage<double> empty_;
};

// The float is the position along x of an image that is too narrow for the four neighbours: at
// least one is outside, where its index is seen. Those inside, and their weights, the result tells.
class CubicAlongX {
public:
    Tally base;
    Tally result;

    CubicAlongX()
    {
        image_.initialize(kWidth, 4, 4, 1);
        for (int z = 0; z < 4; ++z)
            for (int y = 0; y < 4; ++y)
                for (int x = 0; x < kWidth; ++x)
                    image_(x, y, z, 0) = voxelAt(x, y, z);
    }

    void take(double v)
    {
        const oracle::CubicAxis x = oracle::cubicAxis(v);
        border_.expect(outside(x), {0, 4}, {0, 4});
        const double sum = sampled(core::Cubic(), image_, border_, v, kY, kZ);
        base.add(border_.sawAll(), v);
        result.add(sameBits(sum, oracle::cubic(voxelAt, x, y_, z_)), v);
    }

private:
    static constexpr int kWidth = 3;
    static constexpr double kY = 1.375;
    static constexpr double kZ = 1.75;

    // They are in a row: with 3 voxels between them, no two of the 4 are outside on both sides.
    static Watcher::Axis outside(const oracle::CubicAxis& x)
    {
        const auto isOutside = [](const oracle::CubicNeighbour& n) {
            return n.index < 0 || n.index >= kWidth;
        };
        const auto first = std::find_if(x.begin(), x.end(), isOutside);
        const auto count = std::count_if(x.begin(), x.end(), isOutside);
        return {first == x.end() ? 0 : first->index, static_cast<unsigned int>(count)};
    }

    const oracle::CubicAxis y_ = oracle::cubicAxis(kY);
    const oracle::CubicAxis z_ = oracle::cubicAxis(kZ);
    Watcher border_;
    core::VxImage<double> image_;
};

template <class T>
struct Conversion {
    Tally truncated;
    Tally rounded;

    void take(Giver& giver, double v)
    {
        giver.result = v;
        truncated.add(
            sameBits(image_.getValueVoxel(0.0, 0.0, 0.0, 0, &giver), oracle::truncateTo<T>(v)), v);
        rounded.add(sameBits(image_.getValueVoxel(0.0, 0.0, 0.0, 0, &giver, core::Constant(), T{0}),
                             oracle::roundTo<T>(v)),
                    v);
    }

private:
    core::VxImage<T> image_;
};

template <class... Types>
using Conversions = std::tuple<Conversion<Types>...>;

double floatOf(std::uint32_t bits)
{
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return static_cast<double>(value);
}

// What was taken through, and how it went.
using Results = std::map<std::string, Tally>;

// Takes floats through everything.
class Worker {
public:
    void take(double v)
    {
        indices_.take(v);
        cubic_.take(v);
        std::apply([&](auto&... each) { (each.take(giver_, v), ...); }, conversions_);
    }

    void addTo(Results& results) const
    {
        results["index\tnearest neighbour"].add(indices_.nearest);
        results["index\ttrilinear, lowest of 2"].add(indices_.linear);
        results["index\ttricubic, lowest of 4"].add(cubic_.base);
        results["kernel\ttricubic, along x"].add(cubic_.result);
        std::apply([&](const auto&... each) { (addTo(results, each), ...); }, conversions_);
    }

private:
    template <class T>
    static void addTo(Results& results, const Conversion<T>& conversion)
    {
        results[std::string("truncated\t") + elementTypeName<T>()].add(conversion.truncated);
        results[std::string("rounded\t") + elementTypeName<T>()].add(conversion.rounded);
    }

    Indices indices_;
    CubicAlongX cubic_;
    OfElementTypes<Conversions> conversions_;
    Giver giver_;
};

// The floats first, first + every, ... below 2^32 by their bits, shared out in blocks.
class Floats {
public:
    Floats(std::uint64_t every, std::uint64_t first) : every_(every), next_(first) {}

    void takeAll(Worker& worker)
    {
        constexpr std::uint64_t kBlock = 1U << 16U;
        constexpr std::uint64_t kEnd = std::uint64_t{1} << 32U;
        for (;;) {
            const std::uint64_t block = next_.fetch_add(kBlock * every_);
            if (block >= kEnd)
                return;
            const std::uint64_t end = std::min(block + kBlock * every_, kEnd);
            for (std::uint64_t bits = block; bits < end; bits += every_)
                worker.take(floatOf(static_cast<std::uint32_t>(bits)));
        }
    }

private:
    std::uint64_t every_;
    std::atomic<std::uint64_t> next_;
};

Results resultsOf(Floats& floats, unsigned int threadCount)
{
    Results results;
    std::mutex mutex;
    std::vector<std::thread> threads;
    for (unsigned int n = 0; n < threadCount; ++n)
        threads.emplace_back([&] {
            Worker worker;
            floats.takeAll(worker);
            const std::lock_guard<std::mutex> lock(mutex);
            worker.addTo(results);
        });
    for (std::thread& thread : threads)
        thread.join();
    return results;
}

}  // namespace
}  // namespace volux::test

int main(int argc, char** argv)
{
    if (argc != 4)
        return 2;
    volux::test::Floats floats(std::strtoull(argv[1], nullptr, 10),
                               std::strtoull(argv[2], nullptr, 10));
    const auto threads = static_cast<unsigned int>(std::strtoul(argv[3], nullptr, 10));
    for (const auto& [what, tally] : volux::test::resultsOf(floats, threads)) {
        if (tally.different != 0)
            std::fprintf(stderr, "%s: differs at %a\n", what.c_str(), tally.example);
        std::printf("%s\t%llu\t%llu\n", what.c_str(),
                    static_cast<unsigned long long>(tally.compared),
                    static_cast<unsigned long long>(tally.different));
    }
    return 0;
}
