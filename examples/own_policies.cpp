// A border and an interpolator of your own, used like those of the library.

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "volux/core.h"

using namespace volux::core;

namespace {

/// Reflects a position at the faces of an image that is not empty, as often as necessary:
/// ... 1 0 | 0 1 2 ...
struct Mirror : Border {
    template <class T>
    T fetch(const VxImage<T>& image, int x, int y, int z, unsigned int c, T, unsigned int width,
            unsigned int height, unsigned int depth)
    {
        return image(reflect(x, width), reflect(y, height), reflect(z, depth), static_cast<int>(c));
    }

protected:
    // The table has a slot for each element type and fills it with the fetch above.
    border_t<Border, Empty>& get() override
    {
        static border_t<Mirror, Border> table;
        return table;
    }

private:
    static int reflect(long long position, unsigned int extent)
    {
        const long long period = 2LL * extent;
        const long long folded = ((position % period) + period) % period;
        return static_cast<int>(std::min(folded, period - 1 - folded));
    }
};

/// The mean of the two voxels around a position along z; x and y are rounded.
struct SliceMean : Interpolator {
    template <class T, class B>
    double operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                      B border, T value)
    {
        NearestNeighbor voxel;
        const double below =
            static_cast<double>(voxel(image, x, y, std::floor(z), c, border, value));
        const double above =
            static_cast<double>(voxel(image, x, y, std::ceil(z), c, border, value));
        return (below + above) / 2.0;
    }

protected:
    interpolator_t<Interpolator, Empty>& get() override
    {
        static interpolator_t<SliceMean, Interpolator> table;
        return table;
    }
};

}  // namespace

int main()
{
    VxImage<int> image;
    if (image.initialize(1, 1, 3, 1) != SUCCESS)
        return 1;
    for (int z = 0; z < 3; ++z)
        image(0, 0, z, 0) = 10 * (z + 1);  // 10 20 30

    Mirror mirror;
    SliceMean mean;
    const auto at = [&](double z, Interpolator* kernel) {
        return image.getDoubleValueReal(0.0, 0.0, z, 0, kernel, &mirror, 0);
    };
    for (int z = -3; z < 6; ++z)
        std::printf("%d ", static_cast<int>(at(z, &InterpolationType::NEAREST_NEIGHBOR)));
    std::printf("\nmean of slices 1 and 2: %g\n", at(1.4, &mean));

    const bool mirrored = at(-1.0, &InterpolationType::LINEAR) == 10.0 &&
                          at(-3.0, &InterpolationType::NEAREST_NEIGHBOR) == 30.0 &&
                          at(4.0, &InterpolationType::LINEAR) == 20.0;
    return mirrored && at(1.4, &mean) == 25.0 && at(2.5, &mean) == 30.0 ? 0 : 1;
}
