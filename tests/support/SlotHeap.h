// A heap of which nothing is lost: every block has a slot of its own, so that a
// second free, a write beside a block and a write after its free are all seen
// for certain.
#pragma once

#include <cstddef>
#include <cstdint>

namespace volux::test {

/// Answers calloc and free for all shared libraries while a Service lives; one
/// of each at a time, and one thread. A block's slot is not used again before
/// reset().
class SlotHeap {
public:
    static constexpr std::size_t kMostBytes = 16384;
    static constexpr int kSlots = 96;

    /// While it lives, the heap answers; `refuses` makes the next request fail.
    class Service {
    public:
        Service(SlotHeap& heap, bool refuses);
        ~Service();
        Service(const Service&) = delete;
        Service& operator=(const Service&) = delete;
    };

    /// A block that does not belong to the library: whoever frees it is wrong.
    void* lend(std::size_t bytes);

    /// Since the start of the latest Service.
    int requests() const { return requests_; }
    std::uint64_t requestedBytes() const { return requestedBytes_; }
    int frees() const { return frees_; }

    /// How often the block has been freed.
    int freesOf(const void* block) const;

    /// How many slots are in use.
    int used() const { return used_; }

    /// What is wrong, or null: every block from the given slot on freed once,
    /// those lent and those in earlier slots never, nothing written beside a
    /// block or after its free.
    const char* fault(int first = 0);

    /// Takes the slots back, but for the first so many.
    void reset(int first) { used_ = first; }

    // For the interposed functions.
    static SlotHeap* serving();
    void* onCalloc(std::size_t count, std::size_t size);
    bool onFree(void* block);

private:
    struct Slot {
        std::size_t bytes;
        bool lent;
        int frees;
    };

    void* take(std::size_t bytes, bool lent);
    int slotOf(const void* block) const;

    Slot slots_[kSlots];
    int used_ = 0;
    bool refuses_ = false;
    int requests_ = 0;
    std::uint64_t requestedBytes_ = 0;
    int frees_ = 0;
};

}  // namespace volux::test
