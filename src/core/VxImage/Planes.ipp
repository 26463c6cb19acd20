// Slices out of and into a volume.
#pragma once

#include <initializer_list>

#include "volux/core/Planes.h"

namespace volux::core {

namespace detail {

template <class Copy>
void forEachElement(unsigned int outerCount, unsigned int innerCount, unsigned int channels,
                    Copy copy)
{
    for (unsigned int outer = 0; outer < outerCount; ++outer) {
        for (unsigned int inner = 0; inner < innerCount; ++inner) {
            for (unsigned int c = 0; c < channels; ++c) {
                copy(static_cast<int>(outer), static_cast<int>(inner), static_cast<int>(c));
            }
        }
    }
}

struct Fit {
    unsigned int planeExtent;
    unsigned int volumeExtent;
    ErrorType mismatch;
};

inline ErrorType firstMismatch(std::initializer_list<Fit> fits)
{
    for (const Fit& fit : fits) {
        if (fit.planeExtent != fit.volumeExtent) {
            return fit.mismatch;
        }
    }
    return SUCCESS;
}

// The result of the resize is not examined, deliberately; but without a buffer there is nowhere to
// copy to.
template <class T>
bool sizePlane(VxImage<T>& plane, const ImageSize& size)
{
    plane.setImageSize(size);
    return plane.getBufferPointer() != nullptr;
}

}  // namespace detail

template <class T>
ErrorType getXyPlane(unsigned int index, const VxImage<T>& src, VxImage<T>* dst)
{
    if (dst == nullptr) {
        return ERR_NULL_POINTER;
    }
    if (index >= src.getDepth()) {
        return ERR_INVALID_Z;
    }
    const ImageSize plane(src.getWidth(), src.getHeight(), 1, src.getChannels());
    if (detail::sizePlane(*dst, plane)) {
        const int z = static_cast<int>(index);
        detail::forEachElement(plane.height, plane.width, plane.channels,
                               [&](int j, int i, int c) { (*dst)(i, j, 0, c) = src(i, j, z, c); });
    }
    return SUCCESS;
}

template <class T>
ErrorType getYzPlane(unsigned int index, const VxImage<T>& src, VxImage<T>* dst)
{
    if (dst == nullptr) {
        return ERR_NULL_POINTER;
    }
    if (index >= src.getWidth()) {
        return ERR_INVALID_X;
    }
    const ImageSize plane(src.getHeight(), src.getDepth(), 1, src.getChannels());
    if (detail::sizePlane(*dst, plane)) {
        const int x = static_cast<int>(index);
        detail::forEachElement(plane.height, plane.width, plane.channels,
                               [&](int j, int i, int c) { (*dst)(i, j, 0, c) = src(x, i, j, c); });
    }
    return SUCCESS;
}

// The outer loop runs along the plane's x here, which is the volume's z.
template <class T>
ErrorType getZxPlane(unsigned int index, const VxImage<T>& src, VxImage<T>* dst)
{
    if (dst == nullptr) {
        return ERR_NULL_POINTER;
    }
    if (index >= src.getHeight()) {
        return ERR_INVALID_Y;
    }
    const ImageSize plane(src.getDepth(), src.getWidth(), 1, src.getChannels());
    if (detail::sizePlane(*dst, plane)) {
        const int y = static_cast<int>(index);
        detail::forEachElement(plane.width, plane.height, plane.channels,
                               [&](int i, int j, int c) { (*dst)(i, j, 0, c) = src(j, y, i, c); });
    }
    return SUCCESS;
}

template <class T>
ErrorType setXyPlane(unsigned int index, const VxImage<T>& src, VxImage<T>* dst)
{
    if (dst == nullptr) {
        return ERR_NULL_POINTER;
    }
    if (index >= dst->getDepth()) {
        return ERR_INVALID_Z;
    }
    const ErrorType fit =
        detail::firstMismatch({{src.getWidth(), dst->getWidth(), ERR_INVALID_X},
                               {src.getHeight(), dst->getHeight(), ERR_INVALID_Y},
                               {src.getChannels(), dst->getChannels(), ERR_INVALID_CHANNEL}});
    if (fit != SUCCESS) {
        return fit;
    }
    const int z = static_cast<int>(index);
    detail::forEachElement(src.getHeight(), src.getWidth(), src.getChannels(),
                           [&](int j, int i, int c) { (*dst)(i, j, z, c) = src(i, j, 0, c); });
    return SUCCESS;
}

template <class T>
ErrorType setYzPlane(unsigned int index, const VxImage<T>& src, VxImage<T>* dst)
{
    if (dst == nullptr) {
        return ERR_NULL_POINTER;
    }
    if (index >= dst->getWidth()) {
        return ERR_INVALID_X;
    }
    const ErrorType fit =
        detail::firstMismatch({{src.getWidth(), dst->getHeight(), ERR_INVALID_Y},
                               {src.getHeight(), dst->getDepth(), ERR_INVALID_Z},
                               {src.getChannels(), dst->getChannels(), ERR_INVALID_CHANNEL}});
    if (fit != SUCCESS) {
        return fit;
    }
    const int x = static_cast<int>(index);
    detail::forEachElement(src.getHeight(), src.getWidth(), src.getChannels(),
                           [&](int j, int i, int c) { (*dst)(x, i, j, c) = src(i, j, 0, c); });
    return SUCCESS;
}

template <class T>
ErrorType setZxPlane(unsigned int index, const VxImage<T>& src, VxImage<T>* dst)
{
    if (dst == nullptr) {
        return ERR_NULL_POINTER;
    }
    if (index >= dst->getHeight()) {
        return ERR_INVALID_Y;
    }
    const ErrorType fit =
        detail::firstMismatch({{src.getWidth(), dst->getDepth(), ERR_INVALID_Z},
                               {src.getHeight(), dst->getWidth(), ERR_INVALID_X},
                               {src.getChannels(), dst->getChannels(), ERR_INVALID_CHANNEL}});
    if (fit != SUCCESS) {
        return fit;
    }
    const int y = static_cast<int>(index);
    detail::forEachElement(src.getHeight(), src.getWidth(), src.getChannels(),
                           [&](int j, int i, int c) { (*dst)(j, y, i, c) = src(i, j, 0, c); });
    return SUCCESS;
}

}  // namespace volux::core
