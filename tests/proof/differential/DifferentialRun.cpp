// Compares the library with the oracle on fresh random volumes for so many seconds.
// Usage: differential_run SECONDS SEED THREADS
// Prints a line for each border policy, element type, form, kernel and border: how many samples
// were compared and differed, and how many pairs of a run-time and a compile-time policy.
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "support/PeriodicSpellings.h"
#include "support/SamplingComparison.h"

namespace volux::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned int kPlacesPerScene = 60;
constexpr int kDifferencesPrinted = 5;

void printDifference(const std::string& difference)
{
    static std::mutex mutex;
    static int printed = 0;
    const std::lock_guard<std::mutex> lock(mutex);
    if (++printed <= kDifferencesPrinted)
        std::fprintf(stderr, "%s\n", difference.c_str());
}

template <class T>
struct Comparisons {
    Comparison<T, LibraryOracle> library{allSpellings<T>(), printDifference};
    Comparison<T, PeriodicOracle> own{periodicSpellings<T>(), printDifference};

    void compareScene(std::uint64_t seed)
    {
        library.compareScene(seed, kPlacesPerScene);
        own.compareScene(seed, kPlacesPerScene / 4);
    }
};

// The seed chooses the element type as well, so that it alone repeats a scene.
template <class... Types>
using ComparisonsOf = std::tuple<Comparisons<Types>...>;

struct ForEachType {
    OfElementTypes<ComparisonsOf> all;

    void compareScene(std::uint64_t seed)
    {
        withElementType(seed, [&](auto zero) {
            std::get<Comparisons<decltype(zero)>>(all).compareScene(seed);
        });
    }
};

template <class T>
void print(const char* policies, const std::vector<Meaning<T>>& meanings)
{
    constexpr const char* forms[] = {"getValueVoxel", "getValueReal", "getDoubleValueReal",
                                     "operator()"};
    constexpr const char* borders[] = {"none", kBorderNames[0], kBorderNames[1]};
    for (const Meaning<T>& m : meanings)
        std::printf(
            "%s\t%s\t%s\t%s\t%s\t%llu\t%llu\t%llu\t%llu\n", policies, elementTypeName<T>(),
            forms[static_cast<int>(m.form)], kKernelNames[static_cast<std::size_t>(m.kernel)],
            borders[static_cast<int>(m.border)], static_cast<unsigned long long>(m.compared),
            static_cast<unsigned long long>(m.different), static_cast<unsigned long long>(m.pairs),
            static_cast<unsigned long long>(m.differentPairs));
}

template <class T>
void print(const Comparisons<T>& comparisons)
{
    print("library", comparisons.library.meanings());
    print("own", comparisons.own.meanings());
}

void runUntil(Clock::time_point end, std::uint64_t firstSeed, unsigned int threadCount)
{
    std::atomic<std::uint64_t> nextSeed{firstSeed};
    std::vector<ForEachType> counts(threadCount);
    std::vector<std::thread> threads;
    for (ForEachType& comparisons : counts)
        threads.emplace_back([&] {
            while (Clock::now() < end)
                comparisons.compareScene(nextSeed++);
        });
    for (std::thread& thread : threads)
        thread.join();
    std::printf("scenes\t%llu\n", static_cast<unsigned long long>(nextSeed - firstSeed));
    for (const ForEachType& comparisons : counts)
        std::apply([](const auto&... each) { (print(each), ...); }, comparisons.all);
}

}  // namespace
}  // namespace volux::test

int main(int argc, char** argv)
{
    if (argc != 4)
        return 2;
    const auto end = volux::test::Clock::now() +
                     std::chrono::duration_cast<volux::test::Clock::duration>(
                         std::chrono::duration<double>(std::strtod(argv[1], nullptr)));
    volux::test::runUntil(end, std::strtoull(argv[2], nullptr, 10),
                          static_cast<unsigned int>(std::strtoul(argv[3], nullptr, 10)));
    return 0;
}
