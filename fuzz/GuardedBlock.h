// Memory with a forbidden page on either side: touching a neighbour of the block ends the program.
#pragma once

#include <sanitizer/asan_interface.h>
#include <sys/mman.h>

#include <cstddef>
#include <new>

namespace volux::fuzz {

/// Pages between two forbidden ones, to be used again and again.
class GuardedPages {
public:
    static constexpr std::size_t kPage = 4096;
    static constexpr std::size_t kBytes = 16 * kPage;

    GuardedPages()
        : mapping_(static_cast<char*>(
              mmap(nullptr, kPage + kBytes + kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        if (mapping_ == MAP_FAILED ||
            mprotect(mapping_ + kPage, kBytes, PROT_READ | PROT_WRITE) != 0)
            throw std::bad_alloc();
    }
    ~GuardedPages() { munmap(mapping_, kPage + kBytes + kPage); }
    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;

    /// A block that starts where the first guard ends, or ends where the last one starts. The slack
    /// on its other side is forbidden by the sanitizer.
    template <class T>
    T* place(std::size_t count, bool atEnd)
    {
        const std::size_t bytes = count * sizeof(T);
        if (bytes > kBytes)
            throw std::bad_alloc();
        char* const pages = mapping_ + kPage;
        char* const block = atEnd ? pages + (kBytes - bytes) : pages;
        ASAN_POISON_MEMORY_REGION(pages, kBytes);
        ASAN_UNPOISON_MEMORY_REGION(block, bytes);
        return reinterpret_cast<T*>(block);
    }

private:
    char* mapping_;
};

}  // namespace volux::fuzz
