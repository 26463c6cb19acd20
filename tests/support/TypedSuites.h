// The types and names of typed suites.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "ElementTypes.h"

namespace volux::test {

using ElementTypes = OfElementTypes<::testing::Types>;
using RealTypes = ::testing::Types<float, double>;

/// Third argument of TYPED_TEST_SUITE: a test reads Storage/Short.DoesThis instead of
/// Storage/1.DoesThis.
struct ElementTypeNames {
    template <class T>
    static std::string GetName(int)
    {
        return elementTypeName<T>();
    }
};

}  // namespace volux::test
