#include "TarArchive.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "Failure.h"
#include "GzipFile.h"

namespace reslice {
namespace {

constexpr std::size_t kBlock = 512;
constexpr std::size_t kName = 0, kNameBytes = 100;
constexpr std::size_t kSize = 124, kSizeBytes = 12;
constexpr std::size_t kChecksum = 148, kChecksumBytes = 8;

using Header = std::array<char, kBlock>;

/// Reads octal digits between blanks; anything else gives a number that no archive contains.
unsigned long long number(const Header& header, std::size_t start, std::size_t bytes)
{
    unsigned long long value = 0;
    for (std::size_t i = start; i < start + bytes && header[i] != '\0'; ++i) {
        if (header[i] == ' ')
            continue;
        if (header[i] < '0' || header[i] > '7')
            return ~0ULL;
        value = 8 * value + static_cast<unsigned long long>(header[i] - '0');
    }
    return value;
}

/// The sum of all bytes, those of the checksum itself counted as blanks.
bool checksumHolds(const Header& header)
{
    unsigned long long sum = kChecksumBytes * ' ';
    for (std::size_t i = 0; i < kBlock; ++i)
        if (i < kChecksum || i >= kChecksum + kChecksumBytes)
            sum += static_cast<unsigned char>(header[i]);
    return sum == number(header, kChecksum, kChecksumBytes);
}

std::string lastName(const Header& header)
{
    const char* start = header.data() + kName;
    const std::string name(start, strnlen(start, kNameBytes));
    return name.substr(name.rfind('/') + 1);
}

/// Grows with what arrives, so that a false size costs no memory.
std::string readContents(GzipFile& file, unsigned long long size)
{
    constexpr unsigned long long kStep = 1 << 22;
    std::string contents;
    while (contents.size() < size) {
        const std::size_t before = contents.size();
        const auto wanted = static_cast<std::size_t>(std::min(kStep, size - before));
        contents.resize(before + wanted);
        if (file.read(contents.data() + before, wanted) < wanted)
            cannotRead(file.path(), "the archive is cut off");
    }
    return contents;
}

void skipContents(GzipFile& file, unsigned long long bytes)
{
    if (file.skip(bytes) < bytes)
        cannotRead(file.path(), "the archive is cut off");
}

/// False at the end of the archive, which is a block of zeros or the end of the file.
bool nextHeader(GzipFile& file, Header& header)
{
    const std::size_t got = file.read(header.data(), header.size());
    if (got == 0 || (got == kBlock && header == Header{}))
        return false;
    if (got < kBlock || !checksumHolds(header))
        cannotRead(file.path(), "it is not a tar archive");
    return true;
}

unsigned long long sizeOf(const Header& header, const GzipFile& file)
{
    const unsigned long long size = number(header, kSize, kSizeBytes);
    if (size == ~0ULL)
        cannotRead(file.path(), "the archive is damaged");
    return size;
}

}  // namespace

std::vector<std::string> extractFromTar(const std::string& path,
                                        const std::vector<std::string>& names)
{
    GzipFile file(path);
    std::vector<std::string> contents(names.size());
    Header header{};
    while (nextHeader(file, header)) {
        const unsigned long long size = sizeOf(header, file);
        const auto found = std::find(names.begin(), names.end(), lastName(header));
        if (found == names.end())
            skipContents(file, size);
        else
            contents[static_cast<std::size_t>(found - names.begin())] = readContents(file, size);
        skipContents(file, (kBlock - size % kBlock) % kBlock);
    }
    return contents;
}

}  // namespace reslice
