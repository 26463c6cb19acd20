// The pictures that take a whole volume at once: with volux_resample they are made, without it a
// line tells that they are not.
#pragma once

#include "OutputFolder.h"
#include "Volume.h"
#include "Window.h"

namespace reslice {

/// Oblique planes from the face to the back of the head and back again, one after the other.
void makeFlight(const Volume& volume, const Window& window, const OutputFolder& folder);

/// The brightest voxels of a CT volume, from three sides and going round.
void makeMaxima(const Volume& volume, const OutputFolder& folder);

}  // namespace reslice
