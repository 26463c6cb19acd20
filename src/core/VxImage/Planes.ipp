// Copies slices out of a volume and into it.
#pragma once

#include <initializer_list>

#include "ElementCopy.h"
#include "exact/Layout.h"
#include "volux/core/Planes.h"

namespace volux::core {

namespace detail {

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

// The result of the resize is not examined, because callers expect no code for it; but without a
// buffer there is nothing to copy to.
template <class T>
bool sizePlane(VxImage<T>& plane, const ImageSize& size)
{
    plane.setImageSize(size);
    return plane.getBufferPointer() != nullptr;
}

// Copies a plane of voxels between a volume and a plane image.
template <class T>
void copyPlane(const Place<T>& from, const Place<T>& to, const Loop& rows, const Loop& row,
               unsigned int channels)
{
    copyVoxels(from, to, {1, 0, 0}, rows, row, channels);
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
        const detail::Place<T> from{detail::Layout<T>(src), {0, 0, index}};
        const detail::Place<T> to{detail::Layout<T>(*dst), {0, 0, 0}};
        detail::copyPlane(from, to, {plane.height, from.layout.strideY, to.layout.strideY},
                          {plane.width, from.layout.strideX, to.layout.strideX}, plane.channels);
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
        const detail::Place<T> from{detail::Layout<T>(src), {index, 0, 0}};
        const detail::Place<T> to{detail::Layout<T>(*dst), {0, 0, 0}};
        detail::copyPlane(from, to, {plane.height, from.layout.strideZ, to.layout.strideY},
                          {plane.width, from.layout.strideY, to.layout.strideX}, plane.channels);
    }
    return SUCCESS;
}

// Here the outer loop runs along the plane's x, which is the volume's z: the order decides the
// result where images overlap.
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
        const detail::Place<T> from{detail::Layout<T>(src), {0, index, 0}};
        const detail::Place<T> to{detail::Layout<T>(*dst), {0, 0, 0}};
        detail::copyPlane(from, to, {plane.width, from.layout.strideZ, to.layout.strideX},
                          {plane.height, from.layout.strideX, to.layout.strideY}, plane.channels);
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
    const detail::Place<T> from{detail::Layout<T>(src), {0, 0, 0}};
    const detail::Place<T> to{detail::Layout<T>(*dst), {0, 0, index}};
    detail::copyPlane(from, to, {src.getHeight(), from.layout.strideY, to.layout.strideY},
                      {src.getWidth(), from.layout.strideX, to.layout.strideX}, src.getChannels());
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
    const detail::Place<T> from{detail::Layout<T>(src), {0, 0, 0}};
    const detail::Place<T> to{detail::Layout<T>(*dst), {index, 0, 0}};
    detail::copyPlane(from, to, {src.getHeight(), from.layout.strideY, to.layout.strideZ},
                      {src.getWidth(), from.layout.strideX, to.layout.strideY}, src.getChannels());
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
    const detail::Place<T> from{detail::Layout<T>(src), {0, 0, 0}};
    const detail::Place<T> to{detail::Layout<T>(*dst), {0, index, 0}};
    detail::copyPlane(from, to, {src.getHeight(), from.layout.strideY, to.layout.strideX},
                      {src.getWidth(), from.layout.strideX, to.layout.strideZ}, src.getChannels());
    return SUCCESS;
}

}  // namespace volux::core
