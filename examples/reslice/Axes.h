// How the axes of a file are oriented in the patient.
#pragma once

#include <array>

namespace reslice {

/// For each axis of the patient (to the right, to the front, to the top): the axis of the file
/// that runs along it, and whether the file counts the other way.
struct Axes {
    std::array<unsigned int, 3> source = {0, 1, 2};
    std::array<bool, 3> reversed = {false, false, false};
    bool known = true;

    bool asStored() const
    {
        return source == std::array<unsigned int, 3>{0, 1, 2} &&
               reversed == std::array<bool, 3>{false, false, false};
    }
};

}  // namespace reslice
