/// @file
/// The tags of the seven element types.
#pragma once

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

}  // namespace volux::core
