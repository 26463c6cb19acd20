// The pictures that resample a whole volume. Without volux_resample, a line says that they are
// missing.
#pragma once

#include "OutputFolder.h"
#include "Volume.h"
#include "Window.h"

namespace reslice {

/// Oblique planes from the face to the back of the head and back again, one after the other.
void makeFlight(const Volume& volume, const Window& window, const OutputFolder& folder);

/// The middle slice read through a smooth field of displacements, with its grid drawn.
void makeWarp(const Volume& volume, const Window& window, const OutputFolder& folder);

/// The brightest voxels of a CT volume, from three sides and going round.
void makeMaxima(const Volume& volume, const OutputFolder& folder);

/// A label map as it is, and with a quarter as many voxels along each axis.
void makeLabelPictures(const Volume& volume, const OutputFolder& folder);

}  // namespace reslice
