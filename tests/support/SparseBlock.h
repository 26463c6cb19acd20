// A block for images whose elements lie more than 32 bits apart.
#pragma once

#include <sys/mman.h>

#include <cstddef>

namespace volux::test {

/// More than 4 GiB of address space, of which only the touched pages take memory.
class SparseBlock {
public:
    static constexpr std::size_t kBytes = (std::size_t{1} << 32U) + 1048576;
    SparseBlock()
        : start_(mmap(nullptr, kBytes, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))
    {
    }
    ~SparseBlock()
    {
        if (exists())
            munmap(start_, kBytes);
    }
    SparseBlock(const SparseBlock&) = delete;
    SparseBlock& operator=(const SparseBlock&) = delete;

    bool exists() const { return start_ != MAP_FAILED; }
    unsigned char* bytes() const { return static_cast<unsigned char*>(start_); }

private:
    void* start_;
};

}  // namespace volux::test
