// The way from a policy's address to its table, for one element type and border kind.
#pragma once

#include "volux/core/InterpolationBorderType.h"
#include "volux/core/InterpolationType.h"

namespace volux::core::detail {

// A friend of the policies, whose get() is protected.
struct RunTime {
    template <class T>
    static T fetch(Border& border, const VxImage<T>& image, int x, int y, int z, unsigned int c,
                   T value, unsigned int width, unsigned int height, unsigned int depth)
    {
        return border.get().fetch(border, image, x, y, z, c, value, width, height, depth);
    }

    template <class T, class B>
    static double invoke(Interpolator& interpolator, const VxImage<T>& image, double x, double y,
                         double z, unsigned int c, B border, T value)
    {
        return interpolator.get().invoke(interpolator, image, x, y, z, c, border, value);
    }
};

}  // namespace volux::core::detail
