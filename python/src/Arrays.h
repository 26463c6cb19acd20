// Arrays of Python's as views, where they are.
#pragma once

#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>

#include <array>
#include <cstdint>
#include <optional>

#include "volux/resample.h"

namespace volux::python {

namespace nb = nanobind;
namespace resample = volux::resample;

/// Memory that is only read, and memory that is written: on the processor's side, of any layout.
using Source = nb::ndarray<nb::ro, nb::device::cpu>;
using Destination = nb::ndarray<nb::device::cpu>;

/// n points in a row: x, y and z of each, at any strides.
using Points = nb::ndarray<const double, nb::shape<-1, 3>, nb::device::cpu>;
using MovedPoints = nb::ndarray<double, nb::shape<-1, 3>, nb::c_contig, nb::device::cpu>;

/// Along x, y and z.
using Extents = std::array<unsigned int, 3>;

/// The view of an array whose four axes are x, y, z and the channel. Other arrays are a ValueError.
resample::View<const void> viewOf(const Source& array);
resample::View<void> viewOf(const Destination& array);

/// The view of an array whose axes are z, y and x, if it is one that can be read where it is.
std::optional<resample::View<const void>> volumeOf(const Source& array);

/// Whether each element is where the processor may read it as a number of its type.
template <class Array>
bool isAligned(const Array& array)
{
    return reinterpret_cast<std::uintptr_t>(array.data()) % array.itemsize() == 0;
}

/// The positions of an array of points.
resample::Positions positionsOf(const Points& points);

/// The element type of an array; one that is not served is a ValueError.
core::DataType typeOf(nb::dlpack::dtype type);

}  // namespace volux::python
