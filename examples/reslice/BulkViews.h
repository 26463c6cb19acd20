// Planes, slabs and whole volumes sampled by volux_resample.
#pragma once

#include <memory>

#include "Job.h"
#include "Picture.h"
#include "View.h"
#include "Volume.h"
#include "Window.h"

namespace reslice {

/// How many tiles of a job a bulk view takes: it is sampled, then painted.
constexpr unsigned int kTilesOfBulkView = 2;

/// A plane, trilinear; `outside` is the intensity beyond the volume.
Picture viewPlaneInBulk(const Volume& volume, const Plane& plane, const PixelGrid& grid,
                        double outside, const Window& window, Job& job);

/// The greatest intensity along each pixel's ray, which is `2 * reach` millimetres long and centred
/// on the plane.
Picture viewMaximum(const Volume& volume, const Plane& plane, const PixelGrid& grid, double reach,
                    double outside, const Window& window, Job& job);

}  // namespace reslice
