// What the programs about the container share: the volumes, and how a case is timed and checked.
#pragma once

#include <volux/core.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <string>

#include "Serve.h"

namespace volux::bench {

using Image = core::VxImage<short>;
using Step = std::ptrdiff_t;

constexpr int kWidth = 512;
constexpr int kHeight = 512;
constexpr int kDepth = 256;
constexpr Step kVoxels = Step{kWidth} * kHeight * kDepth;

struct Volume : Image {
    Volume(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ, unsigned int sizeC)
    {
        initialize(sizeX, sizeY, sizeZ, sizeC);
        const Step count = Step{sizeX} * sizeY * sizeZ * sizeC;
        for (Step i = 0; i < count; ++i) {
            getBufferPointer()[i] = static_cast<short>(i * 40503 % 65521 - 32760);
        }
    }
};

inline Image& volume()
{
    static Volume made(kWidth, kHeight, kDepth, 1);
    return made;
}

// Warm memory to write to.
inline Image& target()
{
    static Volume made(kWidth, kHeight, kDepth, 1);
    return made;
}

inline Step elementsOf(const Image& image)
{
    return Step{image.getWidth()} * image.getHeight() * image.getDepth() * image.getChannels();
}

// Where a pass has left its result; every 1009th element, weighted by its place, is compared with
// what the other programs found.
constexpr Step kStride = 1009;

inline void clear(Image& image)
{
    std::memset(image.getBufferPointer(), 0,
                static_cast<std::size_t>(elementsOf(image)) * sizeof(short));
}

inline unsigned int checksum(const short* data, Step count)
{
    unsigned int sum = 0;
    for (Step i = 0; i < count; i += kStride) {
        sum += static_cast<unsigned int>(i / kStride + 1) *
               static_cast<unsigned int>(static_cast<unsigned short>(data[i]));
    }
    return sum;
}

inline unsigned int checksum(const Image& image)
{
    return checksum(image.getBufferPointer(), elementsOf(image));
}

// A number that the compiler does not know.
template <class Number>
Number opaque(Number number)
{
    benchmark::DoNotOptimize(number);
    return number;
}

/// Adds a case: `pass` moves so many elements and gives the checksum of what it made, if asked to.
inline void add(const std::string& name, Step elements, std::function<unsigned int(bool)> pass)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        state.counters["checksum"] = pass(true);  // makes the volumes, too
        for (auto _ : state) {
            pass(false);
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * elements);
    });
}

/// A case whose result stays in an image, whatever earlier ones have left there.
template <class Pass>
inline void add(const std::string& name, Step elements, Image& (*result)(), Pass pass)
{
    add(name, elements, [=](bool wanted) {
        if (wanted) {
            clear(result());
        }
        pass();
        return wanted ? checksum(result()) : 0U;
    });
}

}  // namespace volux::bench
