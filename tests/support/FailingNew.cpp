#include "FailingNew.h"

#include <cstdlib>
#include <new>

#include "Allocation.h"

namespace volux::test {

thread_local int newFailsIn = 0;

}  // namespace volux::test

#ifndef VOLUX_TEST_SANITIZED_HEAP
void* operator new(std::size_t size)
{
    int& failsIn = volux::test::newFailsIn;
    void* const block = failsIn > 0 && --failsIn == 0 ? nullptr : std::malloc(size != 0 ? size : 1);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}
void operator delete(void* block) noexcept
{
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}
#endif
