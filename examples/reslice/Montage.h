// Axial slices side by side.
#pragma once

#include "Job.h"
#include "Picture.h"
#include "Volume.h"
#include "Window.h"

namespace reslice {

constexpr unsigned int kMontageColumns = 6;
constexpr unsigned int kMontageRows = 3;

/// One step for each tile, and one to find the head.
constexpr unsigned int kMontageViews = kMontageColumns * kMontageRows + 1;

/// Slices at equal distances from the feet up, each cropped to the head and drawn into its place.
Picture makeMontage(const Volume& volume, const Window& window, Job& job);

}  // namespace reslice
