/// @file
/// The tags of the seven element types.
#pragma once

#include <type_traits>

namespace volux::core {

/// Tag of the element type of a VxImage, as VxImage::getDataType() reports it.
///
/// Callers store these tags: append, never renumber. Their order is unrelated to the order of the
/// slots in the policy tables.
enum DataType : int {
    DT_SHORT = 1,   ///< short
    DT_INT = 2,     ///< int
    DT_UCHAR = 3,   ///< unsigned char
    DT_USHORT = 4,  ///< unsigned short
    DT_UINT = 5,    ///< unsigned int
    DT_FLOAT = 6,   ///< float
    DT_DOUBLE = 7,  ///< double
};

namespace detail {

template <class T>
constexpr DataType tagOf()
{
    return std::is_same_v<T, short>            ? DT_SHORT
           : std::is_same_v<T, int>            ? DT_INT
           : std::is_same_v<T, unsigned char>  ? DT_UCHAR
           : std::is_same_v<T, unsigned short> ? DT_USHORT
           : std::is_same_v<T, unsigned int>   ? DT_UINT
           : std::is_same_v<T, float>          ? DT_FLOAT
                                               : DT_DOUBLE;
}

}  // namespace detail
}  // namespace volux::core
