// A block for images whose elements are more than 2^32 apart.
#pragma once

#include <sys/mman.h>

#include <cstddef>

namespace volux::test {

/// Address space, more than 4 GiB if not said otherwise; only the touched pages take memory.
class SparseBlock {
public:
    explicit SparseBlock(std::size_t bytes = (std::size_t{1} << 32U) + 1048576)
        : bytes_(bytes),
          start_(mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))
    {
    }
    ~SparseBlock()
    {
        if (exists())
            munmap(start_, bytes_);
    }
    SparseBlock(const SparseBlock&) = delete;
    SparseBlock& operator=(const SparseBlock&) = delete;

    bool exists() const { return start_ != MAP_FAILED; }
    unsigned char* bytes() const { return static_cast<unsigned char*>(start_); }

private:
    std::size_t bytes_;
    void* start_;
};

}  // namespace volux::test
