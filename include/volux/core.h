/// @file
/// Includes every public header of volux_core.
#pragma once

#include "volux/base/Exception.h"
#include "volux/core/DataType.h"
#include "volux/core/ErrorType.h"
#include "volux/core/Geometry.h"
#include "volux/core/InterpolationBorderType.h"
#include "volux/core/InterpolationType.h"
#include "volux/core/Planes.h"
#include "volux/core/VxImage.h"
