// Answers the corpus on whole volumes by volux_resample, with an instruction set and a number of
// threads. "all" as an instruction set is whatever Highway chooses; without arguments, the
// instruction sets are named that the library is compiled for and this processor has.
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "Arranged.h"
#include "BulkCorpus.h"
#include "support/InstructionSets.h"
#include "volux/resample/Gradient.h"
#include "volux/resample/Sampler.h"

namespace volux::digest {
namespace {

class BulkCalls {
public:
    explicit BulkCalls(unsigned int threads) : threads_(threads) {}

    template <class T>
    void resample(const core::VxImage<T>& source, const Grid& grid, core::VxImage<T>& destination,
                  const Options& options) const
    {
        require(resample::resample(source, grid, &destination, onThreads(options)));
    }

    template <class T>
    void reslice(const core::VxImage<T>& source, const Planes& planes,
                 core::VxImage<T>& destination, const Options& options, const Slab& slab) const
    {
        require(resample::reslice(source, planes, &destination, onThreads(options), slab));
    }

    template <class T>
    void resize(const core::VxImage<T>& source, Align align, core::VxImage<T>& destination,
                const Options& options) const
    {
        require(resample::resize(source, destination.getWidth(), destination.getHeight(),
                                 destination.getDepth(), align, &destination, onThreads(options)));
    }

    template <class T, class Result>
    void sample(const core::VxImage<T>& source, const std::vector<resample::Position>& positions,
                resample::Units units, Result* results, const Options& options) const
    {
        require(resample::sample(source, positions.data(), positions.size(), units,
                                 resample::kAllChannels, results, onThreads(options)));
    }

    template <class R, class T>
    std::vector<double> resample(const ViewedVolume<T>& source, const Grid& grid,
                                 const Arrangement& to, const Options& options) const
    {
        const ArrangedSource<T> from(source);
        ArrangedResult<R> result(to, grid, from.view.channels);
        require(resample::resample(from.view, grid, result.view, onThreads(options)));
        return result.take();
    }

    template <class R, class T>
    std::vector<double> reslice(const ViewedVolume<T>& source, const Planes& planes,
                                const Arrangement& to, const Options& options,
                                const Slab& slab) const
    {
        const ArrangedSource<T> from(source);
        ArrangedResult<R> result(to, gridOfPlanes(planes), from.view.channels);
        require(resample::reslice(from.view, planes, result.view, onThreads(options), slab));
        return result.take();
    }

    template <class R, class T>
    std::vector<double> sample(const ViewedVolume<T>& source, const Places& places,
                               const Options& options) const
    {
        const ArrangedSource<T> from(source);
        const ArrangedPlaces arrays(places);
        const std::size_t count = places.positions.size();
        std::vector<R> results(count * from.view.channels);
        const int all = resample::kAllChannels;
        require(places.toVoxels != nullptr
                    ? resample::sample(from.view, *places.toVoxels, arrays.positions(), count, all,
                                       results.data(), onThreads(options))
                    : resample::sample(from.view, arrays.positions(), count, places.units, all,
                                       results.data(), onThreads(options)));
        return {results.begin(), results.end()};
    }

    template <class T, class V>
    void resample(const core::VxImage<T>& source, const Grid& grid, const Moves<V>& moves,
                  core::VxImage<T>& destination, const Options& options) const
    {
        require(resample::resample(source, grid, warpOf(moves), &destination, onThreads(options)));
    }

    template <class V>
    static resample::Position lead(const Moves<V>& moves, const resample::Position& p)
    {
        return warpOf(moves)(p);
    }

    // The first channel alone.
    template <class T>
    std::vector<double> readings(const core::VxImage<T>& source,
                                 const std::vector<resample::Position>& positions,
                                 const Options& options) const
    {
        const resample::Sampler sampler(source, options);
        require(sampler.error());
        std::vector<double> all;
        for (const resample::Position& p : positions)
            all.push_back(sampler(p.x, p.y, p.z));
        return all;
    }

    template <class T>
    std::vector<double> gradients(const core::VxImage<T>& source,
                                  const std::vector<resample::Position>& positions,
                                  const Options& options) const
    {
        std::vector<resample::ReadingAndGradient> found(positions.size());
        require(resample::sampleGradient(source, positions.data(), positions.size(),
                                         resample::Units::VOXELS, 0, found.data(),
                                         onThreads(options)));
        std::vector<double> all;
        for (const auto& r : found)
            all.insert(all.end(), {r.value, r.x, r.y, r.z});
        return all;
    }

private:
    template <class V>
    static resample::Warp warpOf(const Moves<V>& moves)
    {
        return {moves.field, moves.toField, moves.toVoxels};
    }

    Options onThreads(Options options) const
    {
        options.threads = threads_;
        return options;
    }

    static void require(core::ErrorType result)
    {
        if (result != core::SUCCESS)
            throw std::runtime_error("a call was refused with " + std::to_string(result));
    }

    const unsigned int threads_;
};

bool force(const std::string& name)
{
    for (const std::int64_t target : test::instructionSets())
        if (name == hwy::TargetName(target)) {
            test::useInstructionSet(target);
            return true;
        }
    return name == "all";
}

int answer(int rounds, const std::string& target, int threads)
{
    if (rounds < 1 || threads < 0 || !force(target)) {
        std::fputs("usage: bulk_calls [ROUNDS INSTRUCTION_SET THREADS]\n", stderr);
        return EXIT_FAILURE;
    }
    const BulkCalls calls(static_cast<unsigned int>(threads));
    return digestBulk(static_cast<unsigned int>(rounds), calls) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace volux::digest

int main(int count, char** arguments)
{
    if (count == 4)
        return volux::digest::answer(std::atoi(arguments[1]), arguments[2],
                                     std::atoi(arguments[3]));
    for (const std::int64_t target : volux::test::instructionSets())
        std::puts(hwy::TargetName(target));
    return EXIT_SUCCESS;
}
