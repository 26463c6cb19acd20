// Random volumes sampled at random positions, by the library in every spelling and by the oracle.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <ios>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "BitExact.h"
#include "Random.h"
#include "RandomScenes.h"
#include "SamplingSpellings.h"
#include "WrappedVolume.h"

namespace volux::test {

// The oracle of the library's own policies.
struct LibraryOracle {
    template <class T>
    static double interpolate(const Volume<T>& volume, const oracle::Request<T>& request)
    {
        return oracle::interpolate(volume, request);
    }

    template <class T>
    static double finish(const oracle::Request<T>& request, double result)
    {
        return oracle::finish(request, result);
    }
};

// One sampling position with the arguments that go with it.
template <class T>
struct Place {
    oracle::Position p;
    std::int64_t channel;
    T value;
};

// What an oracle finds at one place. A kernel's result with a border is worked out once, however
// many forms and spellings ask for it.
template <class T, class Oracle>
class Expectation {
public:
    Expectation(const Volume<T>& volume, const Place<T>& place) : volume_(volume), place_(place) {}

    oracle::Request<T> request(const Spelling<T>& spelling) const
    {
        return {spelling.form, spelling.kernel, spelling.border,
                place_.p,      place_.channel,  place_.value};
    }

    double of(const Spelling<T>& spelling)
    {
        const oracle::Request<T> asked = request(spelling);
        std::optional<double>& result = resultOf(spelling);
        if (!result)
            result = Oracle::interpolate(volume_, asked);
        return Oracle::finish(asked, *result);
    }

private:
    std::optional<double>& resultOf(const Spelling<T>& spelling)
    {
        const bool physical = spelling.form == oracle::Form::ValueReal ||
                              spelling.form == oracle::Form::DoubleValueReal;
        return results_[physical ? 1 : 0][static_cast<std::size_t>(spelling.kernel)]
                       [static_cast<std::size_t>(spelling.border)];
    }

    const Volume<T>& volume_;
    const Place<T>& place_;
    std::array<std::array<std::array<std::optional<double>, 3>, 3>, 2> results_;
};

// Whether a policy is passed by its address; the name says so.
template <class T>
bool choosesAtRunTime(const Spelling<T>& spelling)
{
    return spelling.name.find_first_of("&*") != std::string::npos ||
           spelling.name.find("pointer") != std::string::npos;
}

// The spellings of one form, kernel and border, which must give the same bits.
template <class T>
struct Meaning {
    oracle::Form form;
    oracle::Kernel kernel;
    oracle::Border border;
    Spellings<T> compileTime;
    Spellings<T> runTime;
    std::uint64_t compared = 0;  // with the oracle
    std::uint64_t different = 0;
    std::uint64_t pairs = 0;  // a run-time spelling with a compile-time one
    std::uint64_t differentPairs = 0;
};

template <class T>
std::vector<Meaning<T>> byMeaning(const Spellings<T>& spellings)
{
    std::vector<Meaning<T>> all;
    for (const Spelling<T>& spelling : spellings) {
        const auto isSame = [&](const Meaning<T>& m) {
            return std::tie(m.form, m.kernel, m.border) ==
                   std::tie(spelling.form, spelling.kernel, spelling.border);
        };
        auto found = std::find_if(all.begin(), all.end(), isSame);
        if (found == all.end())
            found = all.insert(found, {spelling.form, spelling.kernel, spelling.border, {}, {}});
        (choosesAtRunTime(spelling) ? found->runTime : found->compileTime).push_back(spelling);
    }
    return all;
}

// All that is needed to repeat one comparison, in hexadecimal floating point.
template <class T>
std::string described(const Volume<T>& v, const oracle::Request<T>& request)
{
    std::ostringstream text;
    text << std::hexfloat << "at " << request.position.x << ' ' << request.position.y << ' '
         << request.position.z << " channel " << request.channel << " value " << +request.value
         << ", " << elementTypeName<T>() << ", " << static_cast<const Layout&>(v) << ", origin "
         << v.origin << ", spacing " << v.spacing.x << ' ' << v.spacing.y << ' ' << v.spacing.z
         << ", block";
    for (const T& element : v.block)
        text << ' ' << +element;
    return text.str();
}

// At each place every meaning is sampled in one compile-time and one run-time spelling, drawn at
// random; both are compared with the oracle and with each other.
template <class T, class Oracle>
class Comparison {
public:
    using Report = std::function<void(const std::string&)>;

    Comparison(const Spellings<T>& spellings, Report onDifference)
        : meanings_(byMeaning(spellings)), onDifference_(std::move(onDifference))
    {
    }

    // One volume, and so many places in it.
    void compareScene(std::uint64_t seed, unsigned int places)
    {
        Random random(seed);
        const WrappedVolume<T> scene(randomVolume<T>(random));
        for (unsigned int n = 0; n < places; ++n) {
            const Place<T> place = randomPlace(random, scene.volume);
            compareAt({scene, place, seed, random});
        }
    }

    const std::vector<Meaning<T>>& meanings() const { return meanings_; }

private:
    static Place<T> randomPlace(Random& random, const Volume<T>& volume)
    {
        const oracle::Position voxel = randomPosition(random, volume.extents);
        const oracle::Position p = random.below(2) == 0 ? voxel : multiply(voxel, volume.spacing);
        const std::int64_t channel = random.below(static_cast<unsigned int>(volume.channels));
        return {p, channel, randomElement<T>(random, true)};
    }

    // A place in a volume, and what is needed to sample there.
    struct Visit {
        const WrappedVolume<T>& scene;
        const Place<T>& place;
        std::uint64_t seed;
        Random& random;
        Expectation<T, Oracle> expected{scene.volume, place};
    };

    void compareAt(Visit visit)
    {
        for (Meaning<T>& meaning : meanings_) {
            const std::optional<double> first = compareAnyOf(meaning.compileTime, meaning, visit);
            const std::optional<double> second = compareAnyOf(meaning.runTime, meaning, visit);
            comparePair(meaning, first, second);
        }
    }

    // Gives the sample, if there is a spelling.
    std::optional<double> compareAnyOf(const Spellings<T>& spellings, Meaning<T>& meaning,
                                       Visit& visit)
    {
        if (spellings.empty())
            return std::nullopt;
        const Place<T>& place = visit.place;
        const Spelling<T>& spelling =
            spellings[visit.random.below(static_cast<unsigned int>(spellings.size()))];
        const double sampled = spelling.sample(
            {visit.scene.image, place.p, static_cast<int>(place.channel), place.value});
        const double expected = visit.expected.of(spelling);
        ++meaning.compared;
        if (!sameBits(sampled, expected)) {
            ++meaning.different;
            onDifference_("got " + withBits(sampled) + ", expected " + withBits(expected) + " in " +
                          nameOf(spelling) + ", seed " + std::to_string(visit.seed) + ' ' +
                          described(visit.scene.volume, visit.expected.request(spelling)));
        }
        return sampled;
    }

    static void comparePair(Meaning<T>& meaning, const std::optional<double>& compileTime,
                            const std::optional<double>& runTime)
    {
        if (!compileTime || !runTime)
            return;
        ++meaning.pairs;
        if (!sameBits(*compileTime, *runTime))
            ++meaning.differentPairs;
    }

    std::vector<Meaning<T>> meanings_;
    Report onDifference_;
};

}  // namespace volux::test
