// The demo's readers, given anything as a file: each loads it or throws the demo's own Failure.
// What is loaded is looked at as the demo looks at it.
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "Failure.h"
#include "Input.h"
#include "Inv3File.h"
#include "NiftiFile.h"

namespace volux::fuzz {
namespace {

using Bytes = std::vector<unsigned char>;

/// With a checksum that holds, so that something is found behind it.
Bytes compressed(const Bytes& bytes)
{
    Bytes packed(compressBound(bytes.size()) + 64);
    z_stream stream{};
    deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    stream.next_in = const_cast<unsigned char*>(bytes.data());
    stream.avail_in = static_cast<unsigned int>(bytes.size());
    stream.next_out = packed.data();
    stream.avail_out = static_cast<unsigned int>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

/// Writes the checksum into a block that may be a header of a tar archive.
void repairHeader(unsigned char* block)
{
    std::fill_n(block + 148, 8, ' ');
    unsigned int sum = 0;
    for (int i = 0; i < 512; ++i)
        sum += block[i];
    for (int digit = 5; digit >= 0; --digit, sum /= 8)
        block[148 + digit] = static_cast<unsigned char>('0' + sum % 8);
    block[154] = 0;
}

/// Repairs the headers one after the other, as far as their sizes lead from one to the next.
void repairArchive(Bytes& bytes)
{
    for (std::size_t at = 0; at + 512 <= bytes.size();) {
        repairHeader(bytes.data() + at);
        const std::string digits(bytes.begin() + static_cast<std::ptrdiff_t>(at) + 124,
                                 bytes.begin() + static_cast<std::ptrdiff_t>(at) + 135);
        const std::size_t size = std::strtoull(digits.c_str(), nullptr, 8);
        at += 512 + std::min(size, bytes.size()) / 512 * 512 + (size % 512 == 0 ? 0 : 512);
    }
}

/// A file that is gone at the end of the run.
class File {
public:
    File(const std::string& suffix, const Bytes& bytes)
        : path_(std::filesystem::temp_directory_path() /
                ("volux-" + std::to_string(getpid()) + suffix))
    {
        std::ofstream(path_, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }
    ~File() { std::filesystem::remove(path_); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    std::string path() const { return path_.string(); }

private:
    std::filesystem::path path_;
};

void lookAt(const reslice::Volume& volume)
{
    const core::ImageSize size = volume.size();
    const reslice::Point centre = volume.centre();
    volume.sample(centre, &core::InterpolationType::CUBIC,
                  &core::InterpolationBorderType::REPLICATION, 0.0);
    volume.sample({-1.0, -1.0, -1.0}, &core::InterpolationType::LINEAR,
                  &core::InterpolationBorderType::CONSTANT, volume.storable(-1000.0));
    core::VxImage<double> plane;
    volume.slice(reslice::Cut::AXIAL, size.depth - 1, &plane);
    volume.slice(reslice::Cut::SAGITTAL, size.width - 1, &plane);
    volume.slice(reslice::Cut::CORONAL, size.height - 1, &plane);
    volume.someIntensities(1000);
}

using Read = std::unique_ptr<reslice::Volume> (*)(const std::string&);

void read(Read readFile, const char* suffix, const Bytes& bytes)
{
    const File file(suffix, bytes);
    try {
        lookAt(*readFile(file.path()));
    } catch (const reslice::Failure&) {
        // what it promises for all that is not sound
    }
}

}  // namespace
}  // namespace volux::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace volux::fuzz;
    Input input(data, size);
    const unsigned int kind = input.below(8);
    Bytes bytes(input.rest(), input.rest() + input.restSize());
    if (kind >= 6)
        repairArchive(bytes);
    if (kind == 2 || kind == 7)
        bytes = compressed(bytes);
    if (kind >= 4)
        read(reslice::readInv3, ".inv3", bytes);
    else
        read(reslice::readNifti, kind == 1 || kind == 2 ? ".nii.gz" : ".nii", bytes);
    return 0;
}
