// Memory between forbidden pages: touching a neighbour of a block ends the program.
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <new>

#include "Poison.h"

namespace volux::test {

/// As many rooms of so many pages, a forbidden page before and behind each, to be used again and
/// again. Under the address sanitizer of clang++, what a block leaves of its room is forbidden too.
class GuardedPages {
public:
    static constexpr std::size_t kPage = 4096;

    explicit GuardedPages(std::size_t pages = 16, std::size_t rooms = 1)
        : room_(pages * kPage),
          bytes_(rooms * stride() + kPage),
          start_(static_cast<unsigned char*>(
              mmap(nullptr, bytes_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        if (start_ == MAP_FAILED)
            throw std::bad_alloc();
        for (std::size_t at = kPage; at < bytes_; at += stride())
            if (mprotect(start_ + at, room_, PROT_READ | PROT_WRITE) != 0)
                throw std::bad_alloc();
    }
    ~GuardedPages()
    {
        ASAN_UNPOISON_MEMORY_REGION(start_, bytes_);
        munmap(start_, bytes_);
    }
    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;

    /// Bytes from one room to the next.
    std::size_t stride() const { return room_ + kPage; }

    /// A block at the first or at the last bytes of a room.
    template <class T>
    T* place(std::size_t count, bool atEnd, std::size_t room = 0) const
    {
        const std::size_t bytes = count * sizeof(T);
        if (bytes > room_)
            throw std::bad_alloc();
        unsigned char* const first = start_ + kPage + room * stride();
        unsigned char* const block = first + (atEnd ? room_ - bytes : 0);
        ASAN_POISON_MEMORY_REGION(first, room_);
        ASAN_UNPOISON_MEMORY_REGION(block, bytes);
        return reinterpret_cast<T*>(block);
    }

private:
    std::size_t room_;
    std::size_t bytes_;
    unsigned char* start_;
};

}  // namespace volux::test
