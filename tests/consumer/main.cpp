// Uses what crosses the boundary: images, every kind of policy, one of its own, and the exception.
#include <volux/core.h>

#include <cstdio>
#include <string>

using namespace volux::core;

namespace {

// Outside the image, the x index.
template <class Base>
struct Ramp : Base {
    template <class T>
    T fetch(const VxImage<T>&, int x, int, int, unsigned int, T, unsigned int, unsigned int,
            unsigned int)
    {
        return static_cast<T>(x);
    }

protected:
    Border::border_t<Border, Border::Empty>& get() override
    {
        static Border::border_t<Ramp, Border> table;
        return table;
    }
};

// Also where this program has no run-time type information.
template <class Base>
bool asksOwnBorder(const VxImage<float>& image)
{
    Ramp<Base> ramp;
    const auto at9 = [&](auto kernel) {
        return image.getDoubleValueReal(9.0, 0.0, 0.0, 0, kernel, &ramp, 0.0F);
    };
    return at9(NearestNeighbor()) == 9.0 && at9(Linear()) == 9.0 && at9(Cubic()) == 9.0;
}

bool samples(const VxImage<float>& image)
{
    Interpolator* interpolator = &InterpolationType::CUBIC;
    return image.getDoubleValueReal(0.5, 0.0, 0.0, 0, Linear(), Constant(), 0.0F) == 3.0 &&
           image.getDoubleValueReal<Linear>(0.5, 0.0, 0.0, 0, InterpolationType::LINEAR) == 3.0 &&
           asksOwnBorder<Border>(image) && asksOwnBorder<Constant>(image) &&
           asksOwnBorder<Replication>(image) &&
           image.getValueVoxel<Interpolator>(1.0, 0.0, 0.0, 0, interpolator) == 4.0F;
}

// A third of a voxel and the like: products and sums that round, so that a kernel compiled with
// this program's flags would give other bits. The values come from exact arithmetic, rounded at
// each step.
bool keepsItsBits()
{
    double thirds[8];
    for (int n = 0; n < 8; ++n) {
        thirds[n] = 1.0 / (n + 3);
    }
    VxImage<double> image;
    image.initializeWithPointer(thirds, 2, 2, 2, 1);
    return image.getDoubleValueReal(0.1, 0.7, 0.3, 0, Linear(), Constant(), 0.0) ==
               0x1.9a722e4de6eaap-3 &&
           image.getDoubleValueReal(0.1, 0.7, 0.3, 0, Cubic(), Replication(), 0.0) ==
               0x1.9e4dd305a0185p-3;
}

bool throwsOnMisuse(VxImage<float>& image)
{
    try {
        image.initialize(1, 1, 1, 1);
    } catch (const std::exception& error) {
        const std::string text = error.what();
        return text.size() > 3 && text.substr(text.size() - 3) == ":78";
    }
    return false;
}

}  // namespace

int main()
{
    VxImage<float> image;
    if (image.initialize(2, 1, 1, 1) != SUCCESS) {
        return 1;
    }
    image(0, 0, 0, 0) = 2.0F;
    image(1, 0, 0, 0) = 4.0F;
    VxImage<float> plane;
    const bool sliced = getXyPlane(0, image, &plane) == SUCCESS && plane(1, 0, 0, 0) == 4.0F;
    const bool well = sliced && samples(image) && keepsItsBits() && throwsOnMisuse(image);
    std::puts(well ? "ok" : "wrong");
    return well ? 0 : 1;
}
