#include "PngFile.h"

#include <fcntl.h>
#include <png.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>
#include <vector>

#include "Failure.h"
#include "Interrupt.h"

namespace reslice {
namespace {

std::vector<unsigned char> encode(const Picture& picture, const std::string& path)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = picture.width();
    image.height = picture.height();
    image.format = PNG_FORMAT_RGB;
    std::vector<unsigned char> file(PNG_IMAGE_PNG_SIZE_MAX(image));
    png_alloc_size_t bytes = file.size();
    if (png_image_write_to_memory(&image, file.data(), &bytes, 0, picture.bytes(), 0, nullptr) == 0)
        cannotWrite(path, image.message);
    file.resize(bytes);
    return file;
}

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

void writePng(const Picture& picture, const std::string& path)
{
    const std::vector<unsigned char> bytes = encode(picture, path);
    TemporaryFile file(path);
    file.write(bytes.data(), bytes.size());
    file.takeName();
}

}  // namespace reslice
