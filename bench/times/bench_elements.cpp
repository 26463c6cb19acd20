// Single elements in a scan loop, by the inline members and by raw pointers.
#include "Container.h"

namespace volux::bench {
namespace {

/// The fields of an image in variables of the caller.
struct Raw {
    explicit Raw(const Image& image)
        : data(image.getBufferPointer()),
          width(opaque(static_cast<int>(image.getWidth()))),
          height(opaque(static_cast<int>(image.getHeight()))),
          depth(opaque(static_cast<int>(image.getDepth()))),
          channels(opaque(static_cast<int>(image.getChannels()))),
          stepX(opaque(Step{1})),
          stepY(opaque(Step{kWidth})),
          stepZ(opaque(Step{kWidth} * kHeight)),
          stepC(opaque(Step{1}))
    {
    }

    short& at(int x, int y, int z, int c) const
    {
        return data[stepX * x + stepY * y + stepZ * z + stepC * c];
    }

    bool holds(int x, int y, int z, int c) const
    {
        return static_cast<unsigned int>(x) < static_cast<unsigned int>(width) &&
               static_cast<unsigned int>(y) < static_cast<unsigned int>(height) &&
               static_cast<unsigned int>(z) < static_cast<unsigned int>(depth) &&
               static_cast<unsigned int>(c) < static_cast<unsigned int>(channels);
    }

    short* data;
    int width, height, depth, channels;
    Step stepX, stepY, stepZ, stepC;
};

template <class Visit>
void scan(const Visit& visit)
{
    const int width = opaque(kWidth);
    const int height = opaque(kHeight);
    const int depth = opaque(kDepth);
    for (int z = 0; z < depth; ++z) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                visit(x, y, z);
            }
        }
    }
}

template <class Read>
unsigned int sumOf(const Read& read)
{
    long sum = 0;
    scan([&](int x, int y, int z) { sum += read(x, y, z); });
    return static_cast<unsigned int>(sum);
}

short written(int x, int y, int z)
{
    return static_cast<short>(x + 2 * y - 3 * z);
}

void addReading()
{
    add("E/read an element/volux_core", kVoxels, [](bool) {
        const Image& image = volume();
        return sumOf([&](int x, int y, int z) { return image(x, y, z, 0); });
    });
    add("E/read an element/raw", kVoxels, [](bool) {
        const Raw raw(volume());
        return sumOf([&](int x, int y, int z) { return raw.at(x, y, z, 0); });
    });
    add("E/read, tested/volux_core", kVoxels, [](bool) {
        const Image& image = volume();
        return sumOf([&](int x, int y, int z) { return image.getValueVoxel(x, y, z, 0); });
    });
    add("E/read, tested/raw", kVoxels, [](bool) {
        const Raw raw(volume());
        return sumOf([&](int x, int y, int z) {
            return raw.holds(x, y, z, 0) ? raw.at(x, y, z, 0) : short{0};
        });
    });
}

void addWriting()
{
    add("E/write an element/volux_core", kVoxels, target, [] {
        Image& image = target();
        scan([&](int x, int y, int z) { image(x, y, z, 0) = written(x, y, z); });
    });
    add("E/write an element/raw", kVoxels, target, [] {
        const Raw raw(target());
        scan([&](int x, int y, int z) { raw.at(x, y, z, 0) = written(x, y, z); });
    });
    add("E/write, tested/volux_core", kVoxels, target, [] {
        Image& image = target();
        scan([&](int x, int y, int z) { image.setValueVoxel(x, y, z, 0, written(x, y, z)); });
    });
    add("E/write, tested/raw", kVoxels, target, [] {
        const Raw raw(target());
        scan([&](int x, int y, int z) {
            if (raw.holds(x, y, z, 0)) {
                raw.at(x, y, z, 0) = written(x, y, z);
            }
        });
    });
}

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    volux::bench::addReading();
    volux::bench::addWriting();
    return volux::bench::serve(argc, argv);
}
