// What the types of the container promise to the compiler: exact signatures, constness and access.
// Compiling this file is the test.
#include "volux/core.h"

#include <cstddef>
#include <type_traits>
#include <utility>

namespace volux::core {
namespace {

using Index = unsigned int;

/// Whether a member that is not overloaded has this type; a noexcept beyond it is welcome.
template <class Signature, class Member>
constexpr bool has(Member)
{
    return std::is_convertible_v<Member, Signature>;
}

/// Picks the overload of this type; that there is none does not compile.
template <class Signature>
constexpr bool overloads(Signature)
{
    return true;
}

template <class T>
struct StorageSignatures {
    using I = VxImage<T>;
    static_assert(overloads<ErrorType (I::*)(Index, Index, Index, Index)>(&I::initialize));
    static_assert(overloads<ErrorType (I::*)(const I&, bool)>(&I::initialize));
    static_assert(has<ErrorType (I::*)(T*, Index, Index, Index, Index)>(&I::initializeWithPointer));
    static_assert(has<void (I::*)()>(&I::terminate));
    static_assert(overloads<ErrorType (I::*)(Index, Index, Index, Index)>(&I::setImageSize));
    static_assert(overloads<ErrorType (I::*)(const ImageSize&)>(&I::setImageSize));
    static_assert(has<ErrorType (I::*)(const void*, std::size_t)>(&I::setImageData));
    static_assert(has<void (I::*)(Index, Index, Index, Index)>(&I::setImageStride));
    static_assert(overloads<ErrorType (I::*)(double, double, double)>(&I::setVoxelSize));
    static_assert(overloads<ErrorType (I::*)(const VoxelSize&)>(&I::setVoxelSize));
};

template <class T>
struct AccessorSignatures {
    using I = VxImage<T>;
    static_assert(overloads<ErrorType (I::*)(double*, double*, double*)>(&I::getVoxelSize));
    static_assert(overloads<ErrorType (I::*)(double*, double*)>(&I::getVoxelSize));
    static_assert(overloads<VoxelSize (I::*)()>(&I::getVoxelSize));
    static_assert(has<Index (I::*)() const>(&I::getWidth));
    static_assert(has<Index (I::*)() const>(&I::getHeight));
    static_assert(has<Index (I::*)() const>(&I::getDepth));
    static_assert(has<Index (I::*)() const>(&I::getChannels));
    static_assert(has<ImageSize (I::*)()>(&I::getImageSize));
    static_assert(has<DataType (I::*)()>(&I::getDataType));
    static_assert(overloads<T* (I::*)()>(&I::getBufferPointer));
    static_assert(overloads<T* (I::*)() const>(&I::getBufferPointer));
};

template <class T>
struct VoxelSignatures {
    using I = VxImage<T>;
    static_assert(overloads<T& (I::*)(int, int, int, int)>(&I::operator()));
    static_assert(overloads<const T& (I::*)(int, int, int, int) const>(&I::operator()));
    static_assert(overloads<T (I::*)(int, int) const>(&I::getValueVoxel));
    static_assert(overloads<T (I::*)(int, int, int) const>(&I::getValueVoxel));
    static_assert(overloads<T (I::*)(int, int, int, int) const>(&I::getValueVoxel));
    static_assert(has<ErrorType (I::*)(int, int, int, int, T)>(&I::setValueVoxel));
    static_assert(has<bool (I::*)(int, int, int, int) const>(&I::hasVoxel));
    static_assert(overloads<ErrorType (I::*)(T)>(&I::fill));
    static_assert(overloads<ErrorType (I::*)(Index, T)>(&I::fill));
    static_assert(has<ErrorType (I::*)(const Rect&, I*)>(&I::crop));
    static_assert(has<ErrorType (I::*)(const I&, Index, Index, Index)>(&I::draw));
};

template <class T>
struct PlaneSignatures {
    using Plane = ErrorType (*)(Index, const VxImage<T>&, VxImage<T>*);
    static_assert(has<Plane>(&getXyPlane<T>));
    static_assert(has<Plane>(&getYzPlane<T>));
    static_assert(has<Plane>(&getZxPlane<T>));
    static_assert(has<Plane>(&setXyPlane<T>));
    static_assert(has<Plane>(&setYzPlane<T>));
    static_assert(has<Plane>(&setZxPlane<T>));
};

/// True where `Expression<Image>` can be written outside of the class.
template <template <class> class Expression, class Image, class = void>
constexpr bool allowed = false;
template <template <class> class Expression, class Image>
constexpr bool allowed<Expression, Image, std::void_t<Expression<Image>>> = true;

template <class I>
using CallNonConstSize = decltype(std::declval<I&>().getImageSize());
template <class I>
using CallNonConstDataType = decltype(std::declval<I&>().getDataType());
template <class I>
using CallNonConstSpacing = decltype(std::declval<I&>().getVoxelSize());
template <class I>
using CallSpacingByPointers =
    decltype(std::declval<I&>().getVoxelSize(std::declval<double*>(), std::declval<double*>()));
template <class I>
using CallCrop = decltype(std::declval<I&>().crop(Rect(), nullptr));
template <class I>
using CallDraw = decltype(std::declval<I&>().draw(std::declval<const I&>(), 0U, 0U, 0U));
template <class I>
using CallByteCount = decltype(std::declval<I&>().getBufferSizeBytes());
template <class I>
using CallAllocate = decltype(std::declval<I&>().allocateBuffer(std::size_t{}));
template <class I>
using CallFree = decltype(std::declval<I&>().freeBuffer());
template <class I>
using CallCopyFrom = decltype(std::declval<I&>().copyFrom(std::declval<const I&>(), true));
template <class I>
using CallSetDotSequential = decltype(std::declval<I&>().setDotSequentialStride(1U, 1U, 1U, 1U));
template <class I>
using CallIsValidSize = decltype(std::declval<I&>().isValidSize(1U, 1U, 1U, 1U));
template <class I>
using CallIsInside = decltype(std::declval<I&>().isInside(0U, 0U, 0U));
template <class I>
using CallIsInsideChannel = decltype(std::declval<I&>().isInside(0U, 0U, 0U, 0U));
template <class I>
using NameDefaultSize = decltype(I::kDefaultSize);
template <class I>
using NameDefaultPosition = decltype(I::kDefaultPosition);
template <class I>
using NameDefaultVoxelSize = decltype(I::kDefaultVoxelSize);
template <class I>
using NameDefaultDimension = decltype(I::kDefaultDimension);
template <class I>
using NameDefaultDimensionWithChannel = decltype(I::kDefaultDimensionWithChannel);
template <class I>
using NameBuffer = decltype(std::declval<I&>().buffer);

/// Reaches the protected members, as any derived image can.
template <class T>
struct Derived : VxImage<T> {
    static_assert(overloads<std::size_t (VxImage<T>::*)() const>(&Derived::getBufferSizeBytes));

    auto& assign(const VxImage<T>& other) { return VxImage<T>::operator=(other); }
};

template <class T>
struct Constness {
    using I = VxImage<T>;
    static_assert(allowed<CallNonConstSize, I> && !allowed<CallNonConstSize, const I>);
    static_assert(allowed<CallNonConstDataType, I> && !allowed<CallNonConstDataType, const I>);
    static_assert(allowed<CallNonConstSpacing, I> && !allowed<CallNonConstSpacing, const I>);
    static_assert(allowed<CallSpacingByPointers, I> && !allowed<CallSpacingByPointers, const I>);
    static_assert(allowed<CallCrop, I> && !allowed<CallCrop, const I>);
    static_assert(allowed<CallDraw, I> && !allowed<CallDraw, const I>);
};

template <class T>
struct Access {
    using I = VxImage<T>;
    static_assert(std::is_default_constructible_v<I> && std::is_nothrow_destructible_v<I>);
    static_assert(!std::is_copy_constructible_v<I> && !std::is_copy_assignable_v<I>);
    static_assert(!std::is_move_constructible_v<I> && !std::is_move_assignable_v<I>);
    static_assert(std::is_copy_constructible_v<Derived<T>> && std::is_copy_assignable_v<Derived<T>>,
                  "derived images can be copied");
    static_assert(
        std::is_same_v<I&, decltype(std::declval<Derived<T>&>().assign(std::declval<const I&>()))>);
    static_assert(!allowed<CallByteCount, I> && !allowed<CallAllocate, I> && !allowed<CallFree, I>);
    static_assert(!allowed<CallCopyFrom, I> && !allowed<CallSetDotSequential, I>);
    static_assert(!allowed<CallIsValidSize, I>);
    static_assert(!allowed<CallIsInside, I> && !allowed<CallIsInsideChannel, I>);
    static_assert(!allowed<NameDefaultSize, I> && !allowed<NameDefaultPosition, I>);
    static_assert(!allowed<NameDefaultVoxelSize, I> && !allowed<NameDefaultDimension, I>);
    static_assert(!allowed<NameDefaultDimensionWithChannel, I>);
    static_assert(!allowed<NameBuffer, I>);
};

template <class T>
struct Shape {
    using I = VxImage<T>;
    static_assert(!std::is_polymorphic_v<I> && std::is_standard_layout_v<I>);
    static_assert(!std::is_convertible_v<T, I> && !std::is_convertible_v<ImageSize, I>);
};

template <class T>
struct Everything : StorageSignatures<T>,
                    AccessorSignatures<T>,
                    VoxelSignatures<T>,
                    PlaneSignatures<T>,
                    Constness<T>,
                    Access<T>,
                    Shape<T> {
};

template struct Everything<unsigned char>;
template struct Everything<short>;
template struct Everything<unsigned short>;
template struct Everything<int>;
template struct Everything<unsigned int>;
template struct Everything<float>;
template struct Everything<double>;

template <class Value, class Field>
constexpr bool isField(Field Value::*)
{
    return std::is_same_v<Field, unsigned int> || std::is_same_v<Field, double>;
}

template <class Value>
using Equals = decltype(std::declval<const Value&>() == std::declval<const Value&>());
template <class Value>
using Differs = decltype(std::declval<const Value&>() != std::declval<const Value&>());

static_assert(sizeof(ImageSize) == 4 * sizeof(unsigned int) && offsetof(ImageSize, width) == 0 &&
              offsetof(ImageSize, height) == 4 && offsetof(ImageSize, depth) == 8 &&
              offsetof(ImageSize, channels) == 12);
static_assert(sizeof(VoxelSize) == 3 * sizeof(double) && offsetof(VoxelSize, x) == 0 &&
              offsetof(VoxelSize, y) == 8 && offsetof(VoxelSize, z) == 16);
static_assert(sizeof(Rect) == 6 * sizeof(unsigned int) && offsetof(Rect, xStart) == 0 &&
              offsetof(Rect, xEnd) == 4 && offsetof(Rect, yStart) == 8 &&
              offsetof(Rect, yEnd) == 12 && offsetof(Rect, zStart) == 16 &&
              offsetof(Rect, zEnd) == 20);
static_assert(isField(&ImageSize::width) && isField(&ImageSize::channels));
static_assert(isField(&VoxelSize::x) && isField(&VoxelSize::z));
static_assert(isField(&Rect::xStart) && isField(&Rect::zEnd));

static_assert(std::is_constructible_v<ImageSize, Index, Index, Index, Index>);
static_assert(std::is_constructible_v<VoxelSize, double, double, double>);
static_assert(std::is_constructible_v<Rect, Index, Index, Index, Index>);
static_assert(std::is_constructible_v<Rect, Index, Index, Index, Index, Index, Index>);
static_assert(!std::is_constructible_v<ImageSize, Index, Index, Index>);
static_assert(!std::is_constructible_v<VoxelSize, double, double>);
static_assert(!std::is_constructible_v<Rect, Index, Index, Index, Index, Index>);

static_assert(has<Index (Rect::*)() const>(&Rect::width));
static_assert(has<Index (Rect::*)() const>(&Rect::height));
static_assert(has<Index (Rect::*)() const>(&Rect::depth));
static_assert(std::is_same_v<Equals<ImageSize>, bool> && std::is_same_v<Differs<ImageSize>, bool>);
static_assert(std::is_same_v<Equals<VoxelSize>, bool> && std::is_same_v<Differs<VoxelSize>, bool>);
static_assert(!allowed<Equals, Rect> && !allowed<Differs, Rect>, "boxes are not compared");

template <class Value>
struct IsValueType {
    static_assert(std::is_default_constructible_v<Value> && std::is_copy_constructible_v<Value> &&
                  std::is_copy_assignable_v<Value> && std::is_move_assignable_v<Value>);
};
template struct IsValueType<ImageSize>;
template struct IsValueType<VoxelSize>;
template struct IsValueType<Rect>;

}  // namespace
}  // namespace volux::core
