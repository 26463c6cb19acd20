#include "SlotHeap.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "Poison.h"

extern "C" {
// Names that the C library and the sanitizer fix.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
#ifdef VOLUX_TEST_ADDRESS_SANITIZER
void* __interceptor_calloc(std::size_t count, std::size_t size);
void __interceptor_free(void* block);
#else
void* __libc_calloc(std::size_t count, std::size_t size);
void __libc_free(void* block);
#endif
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
}

namespace volux::test {
namespace {

constexpr std::size_t kGuardBytes = 64;
constexpr std::size_t kSlotBytes = kGuardBytes + SlotHeap::kMostBytes + kGuardBytes;
constexpr unsigned char kGuardByte = 0xA5;
constexpr unsigned char kFreedByte = 0xDD;

alignas(64) unsigned char arena[SlotHeap::kSlots][kSlotBytes];
SlotHeap* servingHeap = nullptr;

bool allAre(const unsigned char* bytes, std::size_t count, unsigned char value)
{
    return std::all_of(bytes, bytes + count, [&](unsigned char byte) { return byte == value; });
}

void* realCalloc(std::size_t count, std::size_t size)
{
#ifdef VOLUX_TEST_ADDRESS_SANITIZER
    return __interceptor_calloc(count, size);
#else
    return __libc_calloc(count, size);
#endif
}

void realFree(void* block)
{
#ifdef VOLUX_TEST_ADDRESS_SANITIZER
    __interceptor_free(block);
#else
    __libc_free(block);
#endif
}

}  // namespace

SlotHeap::Service::Service(SlotHeap& heap, bool refuses)
{
    heap.refuses_ = refuses;
    heap.requests_ = 0;
    heap.requestedBytes_ = 0;
    heap.frees_ = 0;
    servingHeap = &heap;
}

SlotHeap::Service::~Service()
{
    servingHeap = nullptr;
}

SlotHeap* SlotHeap::serving()
{
    return servingHeap;
}

void* SlotHeap::take(std::size_t bytes, bool lent)
{
    if (used_ == kSlots || bytes > kMostBytes)
        std::abort();  // the harness asks for more than it may
    unsigned char* const slot = arena[used_];
    unsigned char* const block = slot + kGuardBytes;
    ASAN_UNPOISON_MEMORY_REGION(slot, kSlotBytes);
    std::memset(slot, kGuardByte, kGuardBytes);
    std::memset(block, 0, bytes);
    std::memset(block + bytes, kGuardByte, kGuardBytes);
    ASAN_POISON_MEMORY_REGION(slot, kGuardBytes);
    ASAN_POISON_MEMORY_REGION(block + bytes, kSlotBytes - kGuardBytes - bytes);
    slots_[used_++] = {bytes, lent, 0};
    return block;
}

void* SlotHeap::lend(std::size_t bytes)
{
    return take(bytes, true);
}

/// -1 for what is not the start of a block.
int SlotHeap::slotOf(const void* block) const
{
    const auto at = reinterpret_cast<std::uintptr_t>(block);
    const auto first = reinterpret_cast<std::uintptr_t>(&arena[0][kGuardBytes]);
    if (at < first || (at - first) % kSlotBytes != 0)
        return -1;
    const std::uintptr_t slot = (at - first) / kSlotBytes;
    return slot < static_cast<std::uintptr_t>(used_) ? static_cast<int>(slot) : -1;
}

int SlotHeap::freesOf(const void* block) const
{
    const int slot = slotOf(block);
    return slot < 0 ? 0 : slots_[slot].frees;
}

void* SlotHeap::onCalloc(std::size_t count, std::size_t size)
{
    ++requests_;
    requestedBytes_ = std::uint64_t{count} * size;
    const bool refused = refuses_ || requestedBytes_ > kMostBytes;
    refuses_ = false;
    return refused ? nullptr : take(requestedBytes_, false);
}

bool SlotHeap::onFree(void* block)
{
    const int slot = slotOf(block);
    if (slot < 0)
        return false;
    ++frees_;
    ++slots_[slot].frees;
    if (slots_[slot].frees == 1 && !slots_[slot].lent) {
        std::memset(block, kFreedByte, slots_[slot].bytes);
        ASAN_POISON_MEMORY_REGION(block, slots_[slot].bytes);
    }
    return true;
}

const char* SlotHeap::fault(int first)
{
    for (int i = 0; i < used_; ++i) {
        const Slot& slot = slots_[i];
        const unsigned char* const block = arena[i] + kGuardBytes;
        if (slot.frees != (i < first || slot.lent ? 0 : 1))
            return slot.frees == 0 ? "a block is leaked" : "a block is freed once too often";
        ASAN_UNPOISON_MEMORY_REGION(arena[i], kSlotBytes);
        if (!allAre(arena[i], kGuardBytes, kGuardByte))
            return "something is written before a block";
        if (!allAre(block + slot.bytes, kGuardBytes, kGuardByte))
            return "something is written behind a block";
        if (slot.frees == 1 && !allAre(block, slot.bytes, kFreedByte))
            return "something is written to a block after its free";
    }
    return nullptr;
}

}  // namespace volux::test

extern "C" {
__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) noexcept
{
    auto* const heap = volux::test::SlotHeap::serving();
    return heap != nullptr ? heap->onCalloc(count, size) : volux::test::realCalloc(count, size);
}

__attribute__((visibility("default"))) void free(void* block) noexcept
{
    auto* const heap = volux::test::SlotHeap::serving();
    if (heap == nullptr || !heap->onFree(block))
        volux::test::realFree(block);
}
}
