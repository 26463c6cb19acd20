#include "Allocation.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>

extern "C" {
// Names that the C library and the sanitizers fix.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
void* __libc_calloc(std::size_t count, std::size_t size);
void __libc_free(void* block);

// Without this a sanitizer ends the program at a request that can not be met.
__attribute__((visibility("default"))) const char* __asan_default_options();
__attribute__((visibility("default"))) const char* __tsan_default_options();
const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}
const char* __tsan_default_options()
{
    return "allocator_may_return_null=1";
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
}

namespace volux::test {
namespace {

thread_local AllocationWatch* watchOfThisThread = nullptr;

}  // namespace

AllocationWatch::AllocationWatch()
{
    if (watchOfThisThread != nullptr)
        throw std::logic_error("one AllocationWatch a thread at a time");
    watchOfThisThread = this;
}

AllocationWatch::~AllocationWatch()
{
    watchOfThisThread = nullptr;
}

void AllocationWatch::failCalloc(int nth)
{
    failIn_ = nth;
}

void AllocationWatch::follow(const void* block)
{
    add({block, 0, 0, true, 0});
}

int AllocationWatch::callocCount() const
{
    return static_cast<int>(
        std::count_if(records_, records_ + count_, [](const Record& r) { return !r.followed; }));
}

const AllocationWatch::Record& AllocationWatch::nthCalloc(int nth) const
{
    for (int i = 0; i < count_; ++i) {
        if (!records_[i].followed && nth-- == 0)
            return records_[i];
    }
    throw std::out_of_range("there were not so many calls of calloc");
}

std::size_t AllocationWatch::callocElements(int nth) const
{
    return nthCalloc(nth).elements;
}

std::size_t AllocationWatch::callocElementBytes(int nth) const
{
    return nthCalloc(nth).elementBytes;
}

const void* AllocationWatch::callocResult(int nth) const
{
    return nthCalloc(nth).block;
}

const AllocationWatch::Record* AllocationWatch::latest(const void* block) const
{
    for (int i = count_; i-- > 0;) {
        if (records_[i].block == block)
            return &records_[i];
    }
    return nullptr;
}

int AllocationWatch::freeCount(const void* block) const
{
    const Record* record = latest(block);
    if (record == nullptr)
        throw std::invalid_argument("a block that this watch does not know");
    return record->frees;
}

int AllocationWatch::liveCount() const
{
    return static_cast<int>(std::count_if(records_, records_ + count_, [](const Record& r) {
        return !r.followed && r.block != nullptr && r.frees == 0;
    }));
}

void AllocationWatch::add(const Record& record)
{
    if (count_ == kCapacity)
        std::abort();  // called from inside calloc: nothing gentler is safe
    records_[count_++] = record;
}

void* AllocationWatch::onCalloc(std::size_t count, std::size_t size)
{
    const bool fails = failIn_ > 0 && --failIn_ == 0;
    void* block = fails ? nullptr : __libc_calloc(count, size);
    if (fails)
        errno = ENOMEM;  // the C library asserts that of its own calls
    add({block, count, size, false, 0});
    return block;
}

void AllocationWatch::onFree(const void* block)
{
    if (block != nullptr && latest(block) != nullptr)
        ++const_cast<Record*>(latest(block))->frees;
}

}  // namespace volux::test

#ifndef VOLUX_TEST_SANITIZED_HEAP
extern "C" {
__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) noexcept
{
    auto* const watch = volux::test::watchOfThisThread;
    return watch != nullptr ? watch->onCalloc(count, size) : __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void free(void* block) noexcept
{
    if (auto* const watch = volux::test::watchOfThisThread; watch != nullptr)
        watch->onFree(block);
    __libc_free(block);
}
}
#endif
