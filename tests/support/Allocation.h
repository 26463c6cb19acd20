// A watch on calloc and free: counts, records and fails the calls of one thread.
#pragma once

#include <cstddef>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
#define VOLUX_TEST_SANITIZED_HEAP 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VOLUX_TEST_SANITIZED_HEAP 1
#endif

namespace volux::test {

/// Watches the calloc and free calls of the thread that made it, for as long as it lives; the calls
/// of other threads pass by. The executable's calloc and free come before the C library's for every
/// shared library, so those of the library under test are seen. One watch a thread at a time.
///
/// A sanitizer keeps the heap for itself: then nothing is seen or failed, and a test that needs the
/// watch starts with `if (!AllocationWatch::kWorks) GTEST_SKIP() << AllocationWatch::kWhyNot;`.
/// A request for 2^50 bytes and more fails in every build.
class AllocationWatch {
public:
#ifdef VOLUX_TEST_SANITIZED_HEAP
    static constexpr bool kWorks = false;
#else
    static constexpr bool kWorks = true;
#endif
    static constexpr const char* kWhyNot = "the sanitizer keeps calloc and free for itself";

    AllocationWatch();
    ~AllocationWatch();
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;

    /// The nth calloc from now, counted from 1, gives null. Once only.
    void failCalloc(int nth);

    /// Counts frees of a block that was not obtained under this watch.
    void follow(const void* block);

    int callocCount() const;
    /// Number of elements and size of an element, as passed to the nth calloc, counted from 0.
    std::size_t callocElements(int nth) const;
    std::size_t callocElementBytes(int nth) const;
    /// Result of the nth calloc, counted from 0.
    const void* callocResult(int nth) const;

    /// How often a block obtained under this watch, or followed by it, was freed. An address that
    /// calloc has given out again counts anew.
    int freeCount(const void* block) const;
    /// Blocks obtained under this watch that were not freed yet.
    int liveCount() const;

    // For the interposed functions.
    void* onCalloc(std::size_t count, std::size_t size);
    void onFree(const void* block);

private:
    struct Record {
        const void* block;
        std::size_t elements;
        std::size_t elementBytes;
        bool followed;
        int frees;
    };
    // The size is fixed, because a watch must not allocate.
    static constexpr int kCapacity = 256;

    const Record& nthCalloc(int nth) const;
    const Record* latest(const void* block) const;
    void add(const Record& record);

    Record records_[kCapacity];
    int count_ = 0;
    int failIn_ = 0;
};

}  // namespace volux::test
