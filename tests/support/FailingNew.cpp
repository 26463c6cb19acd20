#include "FailingNew.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include "Allocation.h"

namespace volux::test {

thread_local int newFailsIn = 0;

namespace {

std::atomic<long> live{0};

}  // namespace

long liveNews()
{
    return live;
}

#ifndef VOLUX_TEST_SANITIZED_HEAP
namespace {

void release(void* block)
{
    live -= block != nullptr ? 1 : 0;
    std::free(block);
}

}  // namespace
#endif

}  // namespace volux::test

#ifndef VOLUX_TEST_SANITIZED_HEAP
void* operator new(std::size_t size)
{
    int& failsIn = volux::test::newFailsIn;
    void* const block = failsIn > 0 && --failsIn == 0 ? nullptr : std::malloc(size != 0 ? size : 1);
    if (block == nullptr)
        throw std::bad_alloc();
    ++volux::test::live;
    return block;
}
void operator delete(void* block) noexcept
{
    volux::test::release(block);
}
void operator delete(void* block, std::size_t) noexcept
{
    volux::test::release(block);
}
#endif
