// The private and protected members of an image, callable.
#pragma once

#include <cstddef>

#include "Names.h"
#include "PrivateAccess.h"

namespace volux::test {

/// An image whose protected members are public.
template <class T>
struct CopyableImage : VxImage<T> {
    CopyableImage() = default;
    CopyableImage(const CopyableImage&) = default;
    explicit CopyableImage(const VxImage<T>& other) : VxImage<T>(other) {}
    CopyableImage& operator=(const CopyableImage&) = default;
    ~CopyableImage() = default;

    VxImage<T>& assign(const VxImage<T>& other) { return VxImage<T>::operator=(other); }

    using VxImage<T>::getBufferSizeBytes;
};

namespace member {

template <class T, class Function>
using Of = Function VxImage<T>::*;

template <class T>
struct AllocateBuffer {
    using Member = Of<T, ErrorType(std::size_t)>;
};
template <class T>
struct FreeBuffer {
    using Member = Of<T, ErrorType()>;
};
template <class T>
struct CopyFrom {
    using Member = Of<T, ErrorType(const VxImage<T>&, bool)>;
};
template <class T>
struct SetDotSequentialStride {
    using Member = Of<T, void(unsigned int, unsigned int, unsigned int, unsigned int)>;
};
template <class T>
struct IsValidSize {
    using Member = Of<T, bool(unsigned int, unsigned int, unsigned int, unsigned int)>;
};
template <class T>
struct IsInside {
    using Member = Of<T, bool(unsigned int, unsigned int, unsigned int) const>;
};
template <class T>
struct IsInsideWithChannel {
    using Member = Of<T, bool(unsigned int, unsigned int, unsigned int, unsigned int) const>;
};
template <class T>
struct DefaultSize {
    using Member = const unsigned int*;
};
template <class T>
struct DefaultPosition {
    using Member = const unsigned int*;
};
template <class T>
struct DefaultVoxelSize {
    using Member = const double*;
};
template <class T>
struct DefaultDimension {
    using Member = const int*;
};
template <class T>
struct DefaultDimensionWithChannel {
    using Member = const int*;
};

}  // namespace member

// Only an explicit instantiation may name a private member, and the language has no loop over types
// for those; hence macros.
#define VOLUX_TEST_EXPOSE(Tag, T, name)                    \
    member::Tag<T>::Member exposed(const member::Tag<T>&); \
    template struct Expose<member::Tag<T>, &VxImage<T>::name>;

#define VOLUX_TEST_EXPOSE_MEMBERS(T)                                     \
    VOLUX_TEST_EXPOSE(AllocateBuffer, T, allocateBuffer)                 \
    VOLUX_TEST_EXPOSE(FreeBuffer, T, freeBuffer)                         \
    VOLUX_TEST_EXPOSE(CopyFrom, T, copyFrom)                             \
    VOLUX_TEST_EXPOSE(SetDotSequentialStride, T, setDotSequentialStride) \
    VOLUX_TEST_EXPOSE(IsValidSize, T, isValidSize)                       \
    VOLUX_TEST_EXPOSE(IsInside, T, isInside)                             \
    VOLUX_TEST_EXPOSE(IsInsideWithChannel, T, isInside)                  \
    VOLUX_TEST_EXPOSE(DefaultSize, T, kDefaultSize)                      \
    VOLUX_TEST_EXPOSE(DefaultPosition, T, kDefaultPosition)              \
    VOLUX_TEST_EXPOSE(DefaultVoxelSize, T, kDefaultVoxelSize)            \
    VOLUX_TEST_EXPOSE(DefaultDimension, T, kDefaultDimension)            \
    VOLUX_TEST_EXPOSE(DefaultDimensionWithChannel, T, kDefaultDimensionWithChannel)

VOLUX_TEST_EXPOSE_MEMBERS(unsigned char)
VOLUX_TEST_EXPOSE_MEMBERS(short)
VOLUX_TEST_EXPOSE_MEMBERS(unsigned short)
VOLUX_TEST_EXPOSE_MEMBERS(int)
VOLUX_TEST_EXPOSE_MEMBERS(unsigned int)
VOLUX_TEST_EXPOSE_MEMBERS(float)
VOLUX_TEST_EXPOSE_MEMBERS(double)

#undef VOLUX_TEST_EXPOSE_MEMBERS
#undef VOLUX_TEST_EXPOSE

/// callPrivate<member::FreeBuffer>(image) calls image.freeBuffer().
template <template <class> class Tag, class T, class... Arguments>
auto callPrivate(VxImage<T>& image, Arguments... arguments)
{
    return (image.*exposed(Tag<T>{}))(arguments...);
}

template <template <class> class Tag, class T, class... Arguments>
auto callPrivate(const VxImage<T>& image, Arguments... arguments)
{
    return (image.*exposed(Tag<T>{}))(arguments...);
}

template <class T>
ErrorType callCopyFrom(VxImage<T>& image, const VxImage<T>& other, bool copyData)
{
    return (image.*exposed(member::CopyFrom<T>{}))(other, copyData);
}

}  // namespace volux::test
