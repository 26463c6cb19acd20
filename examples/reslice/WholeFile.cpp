#include "WholeFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "Failure.h"
#include "Interrupt.h"

namespace reslice {
namespace {

/// A file of another name, hidden, that disappears unless it is given its own.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string target)
        : target_(std::move(target)),
          name_(neighbourOf(target_)),
          descriptor_(open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666))
    {
        if (descriptor_ < 0)
            cannotWrite(target_, reasonOf(errno));
    }
    ~TemporaryFile()
    {
        if (descriptor_ >= 0)
            close(descriptor_);
        if (!named_)
            unlink(name_.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void write(const unsigned char* bytes, std::size_t count)
    {
        while (count > 0) {
            stopIfInterrupted(target_);
            const ssize_t written =
                ::write(descriptor_, bytes, std::min<std::size_t>(count, 65536));
            if (written < 0 && errno != EINTR)
                cannotWrite(target_, reasonOf(errno));
            bytes += std::max<ssize_t>(written, 0);
            count -= static_cast<std::size_t>(std::max<ssize_t>(written, 0));
        }
    }

    void takeName()
    {
        if (fsync(descriptor_) != 0 || close(std::exchange(descriptor_, -1)) != 0)
            cannotWrite(target_, reasonOf(errno));
        stopIfInterrupted(target_);
        if (std::rename(name_.c_str(), target_.c_str()) != 0)
            cannotWrite(target_, reasonOf(errno));
        named_ = true;
    }

private:
    static std::string neighbourOf(const std::string& target)
    {
        const std::filesystem::path path(target);
        return path.parent_path() /
               ("." + path.filename().string() + "." + std::to_string(getpid()) + ".part");
    }

    std::string target_, name_;
    int descriptor_;
    bool named_ = false;
};

}  // namespace

void writeWhole(const std::vector<unsigned char>& bytes, const std::string& path)
{
    TemporaryFile file(path);
    file.write(bytes.data(), bytes.size());
    file.takeName();
}

}  // namespace reslice
