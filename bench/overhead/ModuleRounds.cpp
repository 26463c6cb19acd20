// Loads and unloads volux_core, as often as the command line says. Prints a line for each round:
// the nanoseconds of loading and those of unloading. Usage: module_rounds ROUNDS
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

#include "overhead/ProcessorTime.h"

using namespace volux::bench;

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "module_rounds: %s\n", what);
    std::exit(EXIT_FAILURE);
}

void loadAndUnload()
{
    const double start = processorTime();
    void* module = dlopen(VOLUX_MODULE, RTLD_NOW | RTLD_LOCAL);
    const double loaded = processorTime();
    if (module == nullptr || dlclose(module) != 0)
        fail(dlerror());
    const double unloaded = processorTime();
    if (dlopen(VOLUX_MODULE, RTLD_NOW | RTLD_NOLOAD) != nullptr)
        fail("volux_core stays loaded");
    std::printf("%.0f %.0f\n", loaded - start, unloaded - loaded);
}

}  // namespace

int main(int count, char** arguments)
{
    const int rounds = count == 2 ? std::atoi(arguments[1]) : 0;
    if (rounds < 1)
        fail("usage: module_rounds ROUNDS, at least 1");
    for (int round = 0; round < rounds; ++round)
        loadAndUnload();
}
