/// @file
/// Everything of volux_resample.
#pragma once

#include "volux/resample/AffineMap.h"
#include "volux/resample/Geometry.h"
#include "volux/resample/Gradient.h"
#include "volux/resample/Grid.h"
#include "volux/resample/Image.h"
#include "volux/resample/Labels.h"
#include "volux/resample/Options.h"
#include "volux/resample/Planes.h"
#include "volux/resample/Resample.h"
#include "volux/resample/Sampler.h"
#include "volux/resample/View.h"
#include "volux/resample/Warp.h"
