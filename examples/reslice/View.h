// Planes through a volume, as pictures.
#pragma once

#include <functional>
#include <string>

#include "Job.h"
#include "Picture.h"
#include "Volume.h"
#include "Window.h"

namespace reslice {

/// Which way the columns and the rows of a picture run: unit vectors along the patient's axes.
struct Directions {
    Point right, down;
};

/// How many pixels a length takes, at least 1.
unsigned int pixels(double millimetres, double edge);

/// A plane in any position, in millimetres.
struct Plane {
    Point centre;
    Directions directions;

    /// The position at these distances to the right of the centre and below it.
    Point at(double right, double down) const;

    /// The unit vector that leads away from the observer.
    Point gaze() const;
};

/// Through the centre, as an upright observer faces it; 0 degrees is before the face, 90 at the
/// patient's left.
Plane uprightPlane(const Volume& volume, double degrees);

struct PixelGrid {
    unsigned int width, height;
    double edge;  ///< millimetres to a pixel

    double right(unsigned int column) const { return (column + 0.5 - width / 2.0) * edge; }
    double down(unsigned int row) const { return (row + 0.5 - height / 2.0) * edge; }
};

/// How to sample, and the intensity that the constant border gives.
struct Policies {
    core::Interpolator* interpolator;
    core::Border* border;
    double outside = 0.0;
};

/// The picture of an intensity that is given for each column and row.
Picture paint(const PixelGrid& grid, const Window& window, Job& job,
              const std::function<double(unsigned int, unsigned int)>& intensity);

Picture viewPlane(const Volume& volume, const Plane& plane, const PixelGrid& grid,
                  const Policies& policies, const Window& window, Job& job);

/// A slice taken out by the plane functions, in radiological convention: the patient's right is
/// on the left, or the front where that axis is not seen. Pixels are square, whatever the spacing.
Picture viewCut(const Volume& volume, Cut cut, unsigned int index, double pixelEdge,
                const Window& window, Job& job,
                core::Interpolator& interpolator = core::InterpolationType::CUBIC);

Directions directionsOf(Cut cut);

/// How far the volume reaches along a cut's axis, in slices.
unsigned int slicesOf(const Volume& volume, Cut cut);

}  // namespace reslice
