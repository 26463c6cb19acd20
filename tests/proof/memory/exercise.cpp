// Drives volux_core for the sanitizer of uninitialised memory: whatever an operation gives must
// come from what was written. Test frameworks do not qualify, because the standard library, which
// is not instrumented, writes much of their memory.
#include <sanitizer/msan_interface.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "support/ElementTypes.h"
#include "support/Names.h"

namespace volux::test {
namespace {

unsigned long inspected = 0;

// Ends the program unless every bit of the value has been written.
template <class Value>
void inspect(const Value& value)
{
    __msan_check_mem_is_initialized(&value, sizeof value);
    ++inspected;
}

template <class T>
void inspectAll(VxImage<T>& image)
{
    inspect(image.getImageSize());
    inspect(image.getVoxelSize());
    for (int z = 0; z < static_cast<int>(image.getDepth()); ++z)
        for (int y = 0; y < static_cast<int>(image.getHeight()); ++y)
            for (int x = 0; x < static_cast<int>(image.getWidth()); ++x)
                for (int c = 0; c < static_cast<int>(image.getChannels()); ++c)
                    inspect(image(x, y, z, c));
}

// Elements that count up.
template <class T>
void number(VxImage<T>& image)
{
    unsigned int n = 0;
    for (int z = 0; z < static_cast<int>(image.getDepth()); ++z)
        for (int y = 0; y < static_cast<int>(image.getHeight()); ++y)
            for (int x = 0; x < static_cast<int>(image.getWidth()); ++x)
                for (int c = 0; c < static_cast<int>(image.getChannels()); ++c)
                    image.setValueVoxel(x, y, z, c, someValue<T>(n++));
}

// A block of which nothing but the voxels is ever written: rows, slices and channels have gaps.
template <class T>
class Sparse {
public:
    Sparse() : block_(static_cast<T*>(std::malloc(kElements * sizeof(T))))
    {
        image.initializeWithPointer(block_.get() + 7, 4, 3, 5, 2);
        image.setImageStride(23, 80, 3, 5);
        image.setVoxelSize(0.5, 2.0, 0.7);
        number(image);
    }

private:
    struct Free {
        void operator()(T* block) const { std::free(block); }
    };
    static constexpr std::size_t kElements = 7 + 4 * 5 + 3 * 23 + 5 * 80 + 11;
    std::unique_ptr<T, Free> block_;

public:
    VxImage<T> image;
};

template <class T, class I, class B>
void sampleBordered(const VxImage<T>& image, double x, double y, double z, I kernel, B border)
{
    inspect(image.getValueVoxel(x, y, z, 1, kernel, border, T{9}));
    inspect(image.getValueReal(x, y, z, 1, kernel, border, T{9}));
    inspect(image.getDoubleValueReal(x, y, z, 1, kernel, border, T{9}));
}

template <class T, class I>
void sampleAt(const VxImage<T>& image, double x, double y, double z, I kernel)
{
    inspect(image.getValueVoxel(x, y, z, 1, kernel));
    inspect(image.getValueReal(x, y, z, 1, kernel));
    inspect(image.getDoubleValueReal(x, y, z, 1, kernel));
    sampleBordered(image, x, y, z, kernel, Constant());
    sampleBordered(image, x, y, z, kernel, Replication());
    sampleBordered<T, I, Border*>(image, x, y, z, kernel, &CONSTANT);
    sampleBordered<T, I, Border*>(image, x, y, z, kernel, &REPLICATION);
}

// Well inside, at edges and ties, outside, and where nothing is finite.
template <class T>
void sample(const VxImage<T>& image)
{
    const double coordinates[] = {-1e300, -7.5, -1.0, -0.0, 0.5,  1.25,
                                  2.0,    3.5,  4.0,  5.75, 1e10, std::nan("")};
    for (const double x : coordinates)
        for (const double y : coordinates)
            for (const double z : coordinates) {
                inspect(image.getValueReal(x, y, z, 1));
                sampleAt(image, x, y, z, NearestNeighbor());
                sampleAt(image, x, y, z, Linear());
                sampleAt(image, x, y, z, Cubic());
                for (Interpolator* kernel :
                     {static_cast<Interpolator*>(&NEAREST_NEIGHBOR),
                      static_cast<Interpolator*>(&LINEAR), static_cast<Interpolator*>(&CUBIC)})
                    sampleAt(image, x, y, z, kernel);
            }
}

// Sizes that grow, shrink and fail; each element is a zero or what was written before.
template <class T>
void resize()
{
    VxImage<T> image;
    inspect(image.getDataType());
    inspectAll(image);
    image.initialize(3, 4, 5, 2);
    inspectAll(image);
    image.fill(T{7});
    for (const unsigned int width : {2U, 6U, 1U, 0U, 9U}) {
        inspect(image.setImageSize(width, 4, 5, 2));
        inspectAll(image);
    }
    inspect(image.setImageSize(0x7FFFFFFF, 0x7FFFFFFF, 1, 1));
    inspect(image.getBufferPointer());
    image.terminate();
    inspectAll(image);
}

template <class T>
void copy(const VxImage<T>& source)
{
    for (const bool withData : {true, false}) {
        VxImage<T> image;
        inspect(image.initialize(source, withData));
        inspectAll(image);
        VxImage<T> again;
        again.initialize(1, 1, 1, 1);
        again.setImageSize(image.getImageSize());
        inspect(again.setImageData(image.getBufferPointer(),
                                   source.getWidth() * source.getHeight() * source.getDepth() *
                                       source.getChannels() * sizeof(T)));
        inspectAll(again);
    }
}

template <class T>
void move(VxImage<T>& image)
{
    VxImage<T> part;
    inspect(image.crop(Rect(1, 9, 0, 1, 2, 3), &part));
    inspectAll(part);
    VxImage<T> xy;
    VxImage<T> yz;
    VxImage<T> zx;
    inspect(getXyPlane(1, image, &xy));
    inspect(getYzPlane(2, image, &yz));
    inspect(getZxPlane(0, image, &zx));
    for (VxImage<T>* plane : {&xy, &yz, &zx})
        inspectAll(*plane);
    VxImage<T> target;
    target.initialize(4, 3, 5, 2);
    inspect(target.draw(part, 2, 1, 4));
    inspect(setXyPlane(0, xy, &target));
    inspect(setYzPlane(1, yz, &target));
    inspect(setZxPlane(2, zx, &target));
    inspect(target.fill(1, T{3}));
    inspectAll(target);
    copy(target);
}

template <class T>
void exercise()
{
    Sparse<T> sparse;
    inspectAll(sparse.image);
    sample(sparse.image);
    move(sparse.image);
    resize<T>();
}

}  // namespace
}  // namespace volux::test

int main()
{
    volux::test::forEachElementType([](auto zero) { volux::test::exercise<decltype(zero)>(); });
    std::printf("%lu values inspected\n", volux::test::inspected);
    return EXIT_SUCCESS;
}
