#include "Inv3File.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "Failure.h"
#include "TarArchive.h"

namespace reslice {
namespace {

constexpr double kLargestExtent = 32767;

/// The text that follows the key, from its next tag on.
std::string after(const std::string& plist, const std::string& key)
{
    const std::size_t at = plist.find("<key>" + key + "</key>");
    return at == std::string::npos ? "" : plist.substr(at + key.size() + 11);
}

/// The numbers of the array that is the key's value.
std::vector<double> numbersOf(const std::string& plist, const std::string& key)
{
    const std::string text = after(plist, key);
    std::vector<double> numbers;
    const std::size_t end = std::min(text.find("</array>"), text.size());
    for (const std::string tag : {"<integer>", "<real>"})
        for (std::size_t at = text.find(tag); at < end; at = text.find(tag, at + 1))
            numbers.push_back(std::strtod(text.c_str() + at + tag.size(), nullptr));
    return numbers;
}

std::string stringOf(const std::string& plist, const std::string& key)
{
    const std::string text = after(plist, key);
    const std::size_t start = text.find("<string>");
    const std::size_t end = text.find("</string>");
    if (start == std::string::npos || end == std::string::npos || end < start + 8)
        return "";
    return text.substr(start + 8, end - start - 8);
}

bool isExtent(double value)
{
    return value >= 1 && value <= kLargestExtent && value == std::floor(value);
}

/// Products and quotients of such lengths are finite and not 0.
bool isSpacing(double value)
{
    return value >= 1e-60 && value <= 1e60;
}

/// Slices run from the feet up, rows from the back to the front, and columns to the patient's
/// left, as scanners store them.
Layout layoutOf(const std::string& plist, const std::string& path)
{
    const std::vector<double> shape = numbersOf(plist, "shape");
    const std::vector<double> spacing = numbersOf(plist, "spacing");
    if (stringOf(plist, "dtype") != "int16")
        cannotRead(path, "its voxels are not 16-bit integers");
    if (shape.size() != 3 || !std::all_of(shape.begin(), shape.end(), isExtent))
        cannotRead(path, "its property list gives no shape of three extents");
    if (spacing.size() != 3 || !std::all_of(spacing.begin(), spacing.end(), isSpacing))
        cannotRead(path, "its property list gives no voxel spacing of three lengths");
    Layout layout{path, {}, {}, {}};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        layout.extent[axis] = static_cast<unsigned int>(shape[2 - axis]);
        layout.spacing[axis] = spacing[axis];
    }
    layout.axes.reversed[0] = true;
    return layout;
}

/// Little-endian on every machine.
std::shared_ptr<void> decodeVoxels(const std::string& bytes)
{
    std::shared_ptr<short[]> voxels(new short[bytes.size() / 2]);
    short* const first = voxels.get();
    for (std::size_t i = 0; i < bytes.size() / 2; ++i) {
        const auto low = static_cast<unsigned char>(bytes[2 * i]);
        const auto high = static_cast<unsigned char>(bytes[2 * i + 1]);
        first[i] = static_cast<short>(low | high << 8);
    }
    return voxels;
}

}  // namespace

std::unique_ptr<Volume> readInv3(const std::string& path)
{
    const std::vector<std::string> files = extractFromTar(path, {"main.plist", "matrix.dat"});
    if (files[0].empty() || files[1].empty())
        cannotRead(path, "it holds no main.plist with a matrix.dat");
    const Layout layout = layoutOf(files[0], path);
    const std::size_t needed =
        std::size_t{2} * layout.extent[0] * layout.extent[1] * layout.extent[2];
    if (files[1].size() != needed)
        cannotRead(path, "its matrix.dat has " + std::to_string(files[1].size()) + " of " +
                             std::to_string(needed) + " bytes");
    return makeVolume<short>(layout, decodeVoxels(files[1]));
}

}  // namespace reslice
