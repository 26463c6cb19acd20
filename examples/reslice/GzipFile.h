// Bytes of a file, compressed by gzip or not.
#pragma once

#include <zlib.h>

#include <cstddef>
#include <string>

namespace reslice {

/// Reads from the front; every failure throws with the file's name and the reason.
class GzipFile {
public:
    explicit GzipFile(std::string path);
    ~GzipFile();
    GzipFile(const GzipFile&) = delete;
    GzipFile& operator=(const GzipFile&) = delete;

    /// Fills the block as far as the file reaches and returns the bytes read.
    std::size_t read(void* block, std::size_t bytes);

    /// Reads and discards; returns the number of bytes.
    unsigned long long skip(unsigned long long bytes);

    bool isCompressed() const { return gzdirect(file_) == 0; }
    const std::string& path() const { return path_; }

private:
    void requireWholeStream();
    [[noreturn]] void failToRead();

    std::string path_;
    gzFile file_;
};

/// Throws unless the path leads to a regular file that may be read.
void requireRegularFile(const std::string& path);

}  // namespace reslice
