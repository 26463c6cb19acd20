// Loads the library with a plug-in that uses it, and unloads both, as often as the command line
// says. Ends with failure if a round leaves anything mapped, or an object of the library's
// undestroyed. Prints what the process holds after the first tenth of the rounds and after all.
#include <dlfcn.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace {

// What the library has registered to be destroyed when it is unloaded.
struct Registered {
    void (*destroy)(void*);
    void* object;
};
constexpr int kMost = 64;
Registered registered[kMost];
int registrations = 0;
int destructions = 0;

void destroyAndCount(void* entry)
{
    const Registered& what = *static_cast<Registered*>(entry);
    what.destroy(what.object);
    ++destructions;
}

bool isOfLibrary(const void* address)
{
    Dl_info info;
    return dladdr(address, &info) != 0 &&
           std::strstr(info.dli_fname, "libvolux_core.so") != nullptr;
}

}  // namespace

// Comes before the C library's for every module that is loaded later.
extern "C" int __cxa_atexit(void (*destroy)(void*), void* object, void* module)
{
    using Function = int (*)(void (*)(void*), void*, void*);
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "__cxa_atexit"));
    if (module == nullptr || !isOfLibrary(module))
        return next(destroy, object, module);
    if (registrations == kMost)
        std::abort();
    registered[registrations] = {destroy, object};
    return next(destroyAndCount, &registered[registrations++], module);
}

namespace {

[[noreturn]] void fail(const char* what)
{
    std::printf("%s\n", what);
    std::exit(EXIT_FAILURE);
}

int countMaps(const char* file)
{
    std::ifstream maps("/proc/self/maps");
    int count = 0;
    for (std::string line; std::getline(maps, line);)
        count += line.find(file) != std::string::npos;
    return count;
}

template <class Result>
Result call(void* module, const char* function)
{
    void* address = dlsym(module, function);
    if (address == nullptr)
        fail(dlerror());
    return reinterpret_cast<Result (*)()>(address)();
}

void loadUseUnload()
{
    registrations = destructions = 0;
    void* module = dlopen(VOLUX_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr)
        fail(dlerror());
    if (countMaps("libvolux_core.so") == 0)
        fail("the library is not loaded");
    if (call<double>(module, "voluxPluginSample") != 12.0 ||
        call<int>(module, "voluxPluginMisuse") != 1)
        fail("the library gives wrong results");
    if (registrations == 0 || destructions != 0)
        fail("nothing to be destroyed is seen while the library is loaded");
    if (dlclose(module) != 0)
        fail(dlerror());
    if (countMaps("libvolux_core.so") != 0)
        fail("the library stays mapped");
    if (destructions != registrations)
        fail("an object of the library's is not destroyed");
}

long residentBytes()
{
    std::ifstream statm("/proc/self/statm");
    long total = 0;
    long resident = 0;
    statm >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

void print(int rounds)
{
    const int maps = countMaps("");
    const struct mallinfo2 heap = mallinfo2();
    std::printf("%d %d %d %zu %ld\n", rounds, destructions, maps, heap.uordblks, residentBytes());
}

}  // namespace

int main(int count, char** arguments)
{
    const int rounds = count == 2 ? std::atoi(arguments[1]) : 0;
    if (rounds < 100)
        fail("usage: load_rounds ROUNDS, at least 100");
    std::setvbuf(stdout, nullptr, _IONBF, 0);  // its buffer would count as growth
    for (int round = 1; round <= rounds; ++round) {
        loadUseUnload();
        if (round == rounds / 10 || round == rounds)
            print(round);
    }
}
