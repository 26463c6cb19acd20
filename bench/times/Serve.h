// How the programs of the bench are driven: with options they are ordinary Google Benchmark
// programs; without, they measure one case for each name on the standard input, so that several can
// take turns.
#pragma once

#include <benchmark/benchmark.h>

#include <exception>
#include <iostream>
#include <string>

namespace volux::bench {

inline void measureWhatIsAsked(char* program, bool warmsUp)
{
    std::string time = "--benchmark_min_time=0.01";
    std::string warmUp = "--benchmark_min_warmup_time=0.001";  // one pass at least
    char* options[] = {program, time.data(), warmsUp ? nullptr : warmUp.data(), nullptr};
    int count = warmsUp ? 2 : 3;
    benchmark::Initialize(&count, options);
    for (std::string name; std::getline(std::cin, name);) {
        benchmark::JSONReporter reporter;
        // What the library adds to a name tells which clock is read.
        benchmark::RunSpecifiedBenchmarks(&reporter, "^" + name + "(/process_time|/real_time)?$");
        std::cout << "\nend" << std::endl;
    }
}

/// Cases that warm up by themselves need no pass for that.
inline int serve(int argc, char** argv, bool warmsUp = false)
{
    try {
        if (argc == 1) {
            measureWhatIsAsked(argv[0], warmsUp);
        } else {
            benchmark::Initialize(&argc, argv);
            benchmark::RunSpecifiedBenchmarks();
        }
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << argv[0] << ": " << failure.what() << '\n';
        return 1;
    }
}

}  // namespace volux::bench
