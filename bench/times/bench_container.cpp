// The container beside plain memory: what the same bytes cost memset, memcpy and plain loops.
#include <cstdlib>
#include <cstring>
#include <string>

#include "Container.h"

namespace volux::bench {
namespace {

constexpr int kBoxX = 50, kBoxY = 60, kBoxZ = 30;
constexpr int kBoxWidth = 400, kBoxHeight = 400, kBoxDepth = 200;
constexpr Step kBoxVoxels = Step{kBoxWidth} * kBoxHeight * kBoxDepth;
// A run of neighbouring planes that cross the rows.
constexpr int kFirstPlane = 200;
constexpr int kPlanes = 64;
constexpr short kFillValue = 0x0505;  // two equal bytes, for memset

Image& twoChannels()
{
    static Volume made(kWidth, kHeight, kDepth / 2, 2);
    return made;
}

Image& box()
{
    static Volume made(kBoxWidth, kBoxHeight, kBoxDepth, 1);
    return made;
}

/// A plane to get into, and one to set from.
template <int Width, int Height>
struct Planes {
    static Image& got()
    {
        static Volume made(Width, Height, 1, 1);
        return made;
    }

    static Image& given()
    {
        static Volume made(Width, Height, 1, 1);
        return made;
    }
};

using XyPlanes = Planes<kWidth, kHeight>;
using YzPlanes = Planes<kHeight, kDepth>;
using ZxPlanes = Planes<kDepth, kWidth>;

void addFill()
{
    add("E/fill/volux_core", kVoxels, target, [] { target().fill(kFillValue); });
    add("E/fill/memset", kVoxels, target, [] {
        std::memset(target().getBufferPointer(), kFillValue & 0xFF, kVoxels * sizeof(short));
    });
    add("E/fill a channel/volux_core", kVoxels / 2, twoChannels,
        [] { twoChannels().fill(1, kFillValue); });
    add("E/fill a channel/raw", kVoxels / 2, twoChannels, [] {
        short* const data = twoChannels().getBufferPointer() + 1;
        const Step step = opaque(Step{2});
        for (Step i = 0; i < kVoxels / 2; ++i) {
            data[step * i] = kFillValue;
        }
    });
}

// Copies rows of a box between two dense volumes.
void copyBox(const short* from, Step fromY, Step fromZ, short* to, Step toY, Step toZ)
{
    for (int z = 0; z < kBoxDepth; ++z) {
        for (int y = 0; y < kBoxHeight; ++y) {
            std::memcpy(to + toZ * z + toY * y, from + fromZ * z + fromY * y,
                        kBoxWidth * sizeof(short));
        }
    }
}

Step boxBegin()
{
    return (Step{kBoxZ} * kHeight + kBoxY) * kWidth + kBoxX;
}

unsigned int cropOurs(bool wanted)
{
    Image out;
    volume().crop(
        {kBoxX, kBoxX + kBoxWidth - 1, kBoxY, kBoxY + kBoxHeight - 1, kBoxZ, kBoxZ + kBoxDepth - 1},
        &out);
    return wanted ? checksum(out) : 0U;
}

short* freshBlock(Step elements)
{
    return static_cast<short*>(std::calloc(static_cast<std::size_t>(elements), sizeof(short)));
}

unsigned int cropRaw(bool wanted)
{
    short* const out = freshBlock(kBoxVoxels);
    copyBox(volume().getBufferPointer() + boxBegin(), kWidth, Step{kWidth} * kHeight, out,
            kBoxWidth, Step{kBoxWidth} * kBoxHeight);
    benchmark::DoNotOptimize(out);
    const unsigned int sum = wanted ? checksum(out, kBoxVoxels) : 0U;
    std::free(out);
    return sum;
}

unsigned int copyOurs(bool wanted)
{
    Image copy;
    copy.initialize(volume(), true);
    return wanted ? checksum(copy) : 0U;
}

unsigned int copyRaw(bool wanted)
{
    short* const copy = freshBlock(kVoxels);
    std::memcpy(copy, volume().getBufferPointer(), kVoxels * sizeof(short));
    benchmark::DoNotOptimize(copy);
    const unsigned int sum = wanted ? checksum(copy, kVoxels) : 0U;
    std::free(copy);
    return sum;
}

void addBoxes()
{
    add("E/crop/volux_core", kBoxVoxels, cropOurs);
    add("E/crop/memcpy", kBoxVoxels, cropRaw);
    add("E/draw/volux_core", kBoxVoxels, target, [] { target().draw(box(), kBoxX, kBoxY, kBoxZ); });
    add("E/draw/memcpy", kBoxVoxels, target, [] {
        copyBox(box().getBufferPointer(), kBoxWidth, Step{kBoxWidth} * kBoxHeight,
                target().getBufferPointer() + boxBegin(), kWidth, Step{kWidth} * kHeight);
    });
    add("E/deep copy/volux_core", kVoxels, copyOurs);
    add("E/deep copy/memcpy", kVoxels, copyRaw);
}

template <class Move>
void eachElement(int width, int height, Move move)
{
    for (Step j = 0; j < height; ++j) {
        for (Step i = 0; i < width; ++i) {
            move(i, j);
        }
    }
}

void addXyPlanes()
{
    constexpr Step kPlane = Step{kWidth} * kHeight;
    add("E/get xy/volux_core", kVoxels, XyPlanes::got, [] {
        for (unsigned int z = 0; z < kDepth; ++z) {
            core::getXyPlane(z, volume(), &XyPlanes::got());
        }
    });
    add("E/get xy/memcpy", kVoxels, XyPlanes::got, [] {
        for (Step z = 0; z < kDepth; ++z) {
            std::memcpy(XyPlanes::got().getBufferPointer(),
                        volume().getBufferPointer() + kPlane * z, kPlane * sizeof(short));
            benchmark::ClobberMemory();
        }
    });
    add("E/set xy/volux_core", kVoxels, target, [] {
        for (unsigned int z = 0; z < kDepth; ++z) {
            core::setXyPlane(z, XyPlanes::given(), &target());
        }
    });
    add("E/set xy/memcpy", kVoxels, target, [] {
        for (Step z = 0; z < kDepth; ++z) {
            std::memcpy(target().getBufferPointer() + kPlane * z,
                        XyPlanes::given().getBufferPointer(), kPlane * sizeof(short));
        }
    });
}

/// Where the elements of a kind of plane are in the volume: (i, j) of plane p is at
/// plane * p + column * i + row * j.
struct Layout {
    Step plane, column, row;
};

using PlaneFunction = core::ErrorType (*)(unsigned int, const Image&, Image*);

template <class Kind>
void addGettingAcross(const std::string& name, PlaneFunction get, Layout layout)
{
    const int width = static_cast<int>(Kind::got().getWidth());
    const int height = static_cast<int>(Kind::got().getHeight());
    const Step elements = Step{width} * height * kPlanes;
    add(name + "/volux_core", elements, Kind::got, [=] {
        for (unsigned int p = kFirstPlane; p < kFirstPlane + kPlanes; ++p) {
            get(p, volume(), &Kind::got());
        }
    });
    add(name + "/raw", elements, Kind::got, [=] {
        for (Step p = kFirstPlane; p < kFirstPlane + kPlanes; ++p) {
            const short* const from = volume().getBufferPointer() + layout.plane * p;
            short* const to = Kind::got().getBufferPointer();
            eachElement(width, height, [=](Step i, Step j) {
                to[width * j + i] = from[layout.column * i + layout.row * j];
            });
        }
    });
}

template <class Kind>
void addSettingAcross(const std::string& name, PlaneFunction set, Layout layout)
{
    const int width = static_cast<int>(Kind::given().getWidth());
    const int height = static_cast<int>(Kind::given().getHeight());
    const Step elements = Step{width} * height * kPlanes;
    add(name + "/volux_core", elements, target, [=] {
        for (unsigned int p = kFirstPlane; p < kFirstPlane + kPlanes; ++p) {
            set(p, Kind::given(), &target());
        }
    });
    add(name + "/raw", elements, target, [=] {
        for (Step p = kFirstPlane; p < kFirstPlane + kPlanes; ++p) {
            const short* const from = Kind::given().getBufferPointer();
            short* const to = target().getBufferPointer() + layout.plane * p;
            eachElement(width, height, [=](Step i, Step j) {
                to[layout.column * i + layout.row * j] = from[width * j + i];
            });
        }
    });
}

void addPlanes()
{
    constexpr Layout kYz = {1, kWidth, Step{kWidth} * kHeight};
    constexpr Layout kZx = {kWidth, Step{kWidth} * kHeight, 1};
    addXyPlanes();
    addGettingAcross<YzPlanes>("E/get yz", core::getYzPlane<short>, kYz);
    addSettingAcross<YzPlanes>("E/set yz", core::setYzPlane<short>, kYz);
    addGettingAcross<ZxPlanes>("E/get zx", core::getZxPlane<short>, kZx);
    addSettingAcross<ZxPlanes>("E/set zx", core::setZxPlane<short>, kZx);
}

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    volux::bench::addFill();
    volux::bench::addBoxes();
    volux::bench::addPlanes();
    return volux::bench::serve(argc, argv);
}
