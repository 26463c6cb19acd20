#include "GzipFile.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <utility>
#include <vector>

#include "Failure.h"
#include "Interrupt.h"

namespace reslice {
namespace {

constexpr std::size_t kChunk = std::size_t{1} << 20;

}  // namespace

void requireRegularFile(const std::string& path)
{
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found)
        cannotRead(path, reasonOf(ENOENT));
    if (error)
        cannotRead(path, reasonOf(error.value()));
    if (status.type() != std::filesystem::file_type::regular)
        cannotRead(path, "it is not a regular file");
}

GzipFile::GzipFile(std::string path) : path_(std::move(path))
{
    requireRegularFile(path_);
    errno = 0;
    file_ = gzopen(path_.c_str(), "rb");
    if (file_ == nullptr)
        cannotRead(path_, reasonOf(errno != 0 ? errno : ENOMEM));
}

GzipFile::~GzipFile()
{
    gzclose(file_);
}

std::size_t GzipFile::read(void* block, std::size_t bytes)
{
    std::size_t done = 0;
    while (done < bytes) {
        stopIfInterrupted(path_);
        const auto wanted = static_cast<unsigned int>(std::min(kChunk, bytes - done));
        const int got = gzread(file_, static_cast<char*>(block) + done, wanted);
        if (got < 0)
            failToRead();
        done += static_cast<std::size_t>(got);
        if (static_cast<unsigned int>(got) < wanted) {
            requireWholeStream();
            break;
        }
    }
    return done;
}

unsigned long long GzipFile::skip(unsigned long long bytes)
{
    std::vector<char> chunk(static_cast<std::size_t>(std::min<unsigned long long>(kChunk, bytes)));
    unsigned long long done = 0;
    while (done < bytes) {
        const auto wanted =
            static_cast<std::size_t>(std::min<unsigned long long>(chunk.size(), bytes - done));
        const std::size_t got = read(chunk.data(), wanted);
        done += got;
        if (got < wanted)
            break;
    }
    return done;
}

void GzipFile::requireWholeStream()
{
    int code = Z_OK;
    gzerror(file_, &code);
    if (code != Z_OK && code != Z_STREAM_END)
        failToRead();
}

void GzipFile::failToRead()
{
    int code = Z_OK;
    const int systemError = errno;
    gzerror(file_, &code);
    if (code == Z_ERRNO)
        cannotRead(path_, reasonOf(systemError));
    cannotRead(path_, code == Z_BUF_ERROR ? "its compressed data end too early"
                                          : "its compressed data are damaged");
}

}  // namespace reslice
