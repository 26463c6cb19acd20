// Loads a plug-in with the library that it uses, and unloads both, as often as the command line
// says. Ends with failure if a round leaves a library mapped, an object of theirs undestroyed or a
// thread running. Prints what the process holds after the first tenth of the rounds and after all.
#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

namespace {

// What the libraries have registered to be destroyed when they are unloaded.
struct Registered {
    void (*destroy)(void*);
    void* object;
};
constexpr int kMost = 64;
Registered registered[kMost];
int registrations = 0;
int destructions = 0;
std::atomic<int> threadsStarted{0};

void destroyAndCount(void* entry)
{
    const Registered& what = *static_cast<Registered*>(entry);
    what.destroy(what.object);
    ++destructions;
}

bool isOfLibrary(const void* address)
{
    Dl_info info;
    return dladdr(address, &info) != 0 && std::strstr(info.dli_fname, "libvolux_") != nullptr;
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

// Likewise: a call that starts no thread would show nothing of threads.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*start)(void*), void* argument)
{
    using Function = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_create"));
    ++threadsStarted;
    return next(thread, attributes, start, argument);
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

int countThreads()
{
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<int>(std::distance(begin(tasks), end(tasks)));
}

// A thread that has been joined may stay in the list for a moment.
bool onlyThisThreadIsLeft()
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (countThreads() == 1)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

template <class Result>
Result call(void* module, const char* function)
{
    void* address = dlsym(module, function);
    if (address == nullptr)
        fail(dlerror());
    return reinterpret_cast<Result (*)()>(address)();
}

void use(void* module)
{
    if (call<double>(module, "voluxPluginSample") != 12.0)
        fail("the library gives wrong results");
    if (dlsym(module, "voluxPluginMisuse") != nullptr &&
        call<int>(module, "voluxPluginMisuse") != 1)
        fail("misuse does not throw");
    if (destructions != 0)
        fail("an object is destroyed while its library is loaded");
}

void loadUseUnload(const char* plugin, const char* library)
{
    registrations = destructions = threadsStarted = 0;
    void* module = dlopen(plugin, RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr)
        fail(dlerror());
    if (countMaps(library) == 0)
        fail("the library is not loaded");
    use(module);
    if (dlclose(module) != 0)
        fail(dlerror());
    if (countMaps("libvolux_") != 0)
        fail("a library stays mapped");
    if (destructions != registrations)
        fail("an object of a library's is not destroyed");
    if (!onlyThisThreadIsLeft())
        fail("a thread is left");
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
    std::printf("%d %d %d %d %zu %ld\n", rounds, destructions, threadsStarted.load(), maps,
                heap.uordblks, residentBytes());
}

}  // namespace

int main(int count, char** arguments)
{
    const int rounds = count == 4 ? std::atoi(arguments[3]) : 0;
    if (rounds < 10)
        fail("usage: load_rounds PLUGIN LIBRARY ROUNDS, at least 10");
    std::setvbuf(stdout, nullptr, _IONBF, 0);  // its buffer would count as growth
    for (int round = 1; round <= rounds; ++round) {
        loadUseUnload(arguments[1], arguments[2]);
        if (round == rounds / 10 || round == rounds)
            print(round);
    }
}
