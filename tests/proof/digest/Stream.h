// Results as bytes that are the same on every processor.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "volux/core/VxImage.h"

namespace volux::digest {

using Stream = std::string;
using Streams = std::map<std::string, Stream>;  // by the name of the family

// The 64 bits, lowest byte first. Which NaN an operation gives is the processor's affair.
inline void append(Stream& stream, double value)
{
    std::uint64_t bits = 0x7FF8000000000000U;
    if (!std::isnan(value))
        std::memcpy(&bits, &value, sizeof bits);
    for (unsigned int shift = 0; shift < 64; shift += 8)
        stream.push_back(static_cast<char>(static_cast<unsigned char>(bits >> shift)));
}

// Each value of an image in the order of its voxels, whatever its layout.
template <class T>
void append(Stream& stream, const core::VxImage<T>& image)
{
    const auto end = [](unsigned int extent) { return static_cast<int>(extent); };
    for (int z = 0; z < end(image.getDepth()); ++z)
        for (int y = 0; y < end(image.getHeight()); ++y)
            for (int x = 0; x < end(image.getWidth()); ++x)
                for (int c = 0; c < end(image.getChannels()); ++c)
                    append(stream, static_cast<double>(image(x, y, z, c)));
}

inline void append(Stream& stream, const std::vector<double>& values)
{
    for (const double value : values)
        append(stream, value);
}

// For each family a line "BYTES FAMILY", then so many bytes.
inline void write(const Streams& streams)
{
    for (const auto& [name, stream] : streams) {
        std::printf("%zu %s\n", stream.size(), name.c_str());
        std::fwrite(stream.data(), 1, stream.size(), stdout);
    }
}

}  // namespace volux::digest
