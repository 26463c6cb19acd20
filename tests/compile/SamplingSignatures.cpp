// What the policies and the sampling members are, said to the compiler. Nothing here runs: a
// signature, a base class, an access level or a const that changes stops the build.
#include "volux/core/VxImage.h"

#include <type_traits>
#include <utility>

#include "volux/core/InterpolationBorderType.h"
#include "volux/core/InterpolationType.h"

namespace volux::core {
namespace {

// True for a member of exactly this type; any other, also one that would convert, is an error.
template <class Signature>
constexpr bool isA(Signature)
{
    return true;
}

// Class tree.

using BorderTable = Border::border_t<Border, Border::Empty>;
using InterpolatorTable = Interpolator::interpolator_t<Interpolator, Interpolator::Empty>;

template <class Base, class Derived>
constexpr bool derives = std::is_base_of_v<Base, Derived>&& std::is_convertible_v<Derived*, Base*>;

static_assert(derives<Border, Constant> && derives<Border, Replication>);
static_assert(derives<Interpolator, NearestNeighbor>);
static_assert(derives<Interpolator, Linear> && derives<Interpolator, Cubic>);

static_assert(derives<Border::Empty::base_t, BorderTable>);
static_assert(derives<BorderTable, Border::border_t<Constant, Border>>);
static_assert(derives<BorderTable, Border::border_t<Replication, Border>>);
static_assert(derives<Interpolator::Empty::base_t, InterpolatorTable>);
static_assert(
    derives<InterpolatorTable, Interpolator::interpolator_t<NearestNeighbor, Interpolator>>);
static_assert(derives<InterpolatorTable, Interpolator::interpolator_t<Linear, Interpolator>>);
static_assert(derives<InterpolatorTable, Interpolator::interpolator_t<Cubic, Interpolator>>);

template <class Tag>
constexpr bool isPlainTag = std::is_empty_v<Tag> && !std::is_polymorphic_v<Tag>;

static_assert(isPlainTag<Border::Empty> && isPlainTag<Border::Empty::base_t>);
static_assert(isPlainTag<Interpolator::Empty> && isPlainTag<Interpolator::Empty::base_t>);

// Polymorphic, and nothing but the pointer to the virtual table.
template <class Class>
constexpr bool isStateless = std::is_polymorphic_v<Class>&& std::has_virtual_destructor_v<Class> &&
                             sizeof(Class) == sizeof(void*);

static_assert(isStateless<Border> && isStateless<Constant> && isStateless<Replication>);
static_assert(isStateless<Interpolator> && isStateless<NearestNeighbor>);
static_assert(isStateless<Linear> && isStateless<Cubic>);
static_assert(isStateless<BorderTable> && isStateless<Border::border_t<Constant, Border>>);
static_assert(isStateless<Border::border_t<Replication, Border>>);
static_assert(isStateless<InterpolatorTable>);
static_assert(isStateless<Interpolator::interpolator_t<NearestNeighbor, Interpolator>>);
static_assert(isStateless<Interpolator::interpolator_t<Linear, Interpolator>>);
static_assert(isStateless<Interpolator::interpolator_t<Cubic, Interpolator>>);

static_assert(std::is_abstract_v<Border> && std::is_abstract_v<Interpolator>);
static_assert(!std::is_abstract_v<BorderTable> && !std::is_abstract_v<InterpolatorTable>);

template <class Policy>
constexpr bool isConcrete = std::is_default_constructible_v<Policy>&&
    std::is_copy_constructible_v<Policy>&& std::is_destructible_v<Policy>&&
        std::is_same_v<decltype(std::declval<Policy&>() = std::declval<const Policy&>()), Policy&>;

static_assert(isConcrete<Constant> && isConcrete<Replication>);
static_assert(isConcrete<NearestNeighbor> && isConcrete<Linear> && isConcrete<Cubic>);
static_assert(std::is_copy_assignable_v<Border> && std::is_copy_assignable_v<Interpolator>);

// Static policy objects: plain variables, not const, so that their addresses become base pointers.

static_assert(std::is_same_v<decltype(InterpolationBorderType::CONSTANT), Constant>);
static_assert(std::is_same_v<decltype(InterpolationBorderType::REPLICATION), Replication>);
static_assert(std::is_same_v<decltype(InterpolationType::NEAREST_NEIGHBOR), NearestNeighbor>);
static_assert(std::is_same_v<decltype(InterpolationType::LINEAR), Linear>);
static_assert(std::is_same_v<decltype(InterpolationType::CUBIC), Cubic>);

// get(): protected, not const, and a reference to the base table everywhere.

template <class Policy, class = void>
constexpr bool opensGet = false;
template <class Policy>
constexpr bool opensGet<Policy, std::void_t<decltype(std::declval<Policy&>().get())>> = true;

static_assert(!opensGet<Border> && !opensGet<Constant> && !opensGet<Replication>);
static_assert(!opensGet<Interpolator> && !opensGet<NearestNeighbor>);
static_assert(!opensGet<Linear> && !opensGet<Cubic>);

template <class Policy>
struct Derived : Policy {
    using Policy::get;
};

static_assert(isA<BorderTable& (Border::*)()>(&Derived<Border>::get));
static_assert(isA<BorderTable& (Constant::*)()>(&Derived<Constant>::get));
static_assert(isA<BorderTable& (Replication::*)()>(&Derived<Replication>::get));
static_assert(isA<InterpolatorTable& (Interpolator::*)()>(&Derived<Interpolator>::get));
static_assert(isA<InterpolatorTable& (NearestNeighbor::*)()>(&Derived<NearestNeighbor>::get));
static_assert(isA<InterpolatorTable& (Linear::*)()>(&Derived<Linear>::get));
static_assert(isA<InterpolatorTable& (Cubic::*)()>(&Derived<Cubic>::get));

// The throwing fallbacks are private.

template <class B, class = void>
constexpr bool opensStub = false;
template <class B>
constexpr bool opensStub<B, std::void_t<decltype(B::stub(std::declval<const VxImage<short>&>(), 0,
                                                         0, 0, 0U, short{0}, 0U, 0U, 0U))>> = true;

template <class I, class = void>
constexpr bool opensStubForObject = false;
template <class I>
constexpr bool opensStubForObject<
    I, std::void_t<decltype(I::stub(std::declval<const VxImage<short>&>(), 0.0, 0.0, 0.0, 0U,
                                    std::declval<Constant>(), short{0}))>> = true;

template <class I, class = void>
constexpr bool opensStubForPointer = false;
template <class I>
constexpr bool opensStubForPointer<I, std::void_t<decltype(I::template stub_p<short, Border>(
                                          std::declval<const VxImage<short>&>(), 0.0, 0.0, 0.0, 0U,
                                          std::declval<Border*>(), short{0}))>> = true;

static_assert(!opensStub<Border>);
static_assert(!opensStubForObject<Interpolator> && !opensStubForPointer<Interpolator>);

// Table slots.

template <class T>
using FetchSlot = T (BorderTable::*)(Border&, const VxImage<T>&, int, int, int, unsigned int, T,
                                     unsigned int, unsigned int, unsigned int);

template <class T, class B>
using InvokeSlot = double (InterpolatorTable::*)(Interpolator&, const VxImage<T>&, double, double,
                                                 double, unsigned int, B, T);

template <class T>
constexpr bool hasSlots()
{
    return isA<FetchSlot<T>>(&BorderTable::fetch) &&
           isA<InvokeSlot<T, Replication>>(&InterpolatorTable::invoke) &&
           isA<InvokeSlot<T, Constant>>(&InterpolatorTable::invoke) &&
           isA<InvokeSlot<T, Border*>>(&InterpolatorTable::invoke);
}

// Borders.

template <class T, class B>
using Fetch = T (B::*)(const VxImage<T>&, int, int, int, unsigned int, T, unsigned int,
                       unsigned int, unsigned int);

template <class T>
constexpr bool hasFetch()
{
    return isA<Fetch<T, Constant>>(&Constant::fetch<T>) &&
           isA<Fetch<T, Replication>>(&Replication::fetch<T>);
}

// Kernels: not const, and the nearest neighbour gives an element.

template <class I, class Result, class T, class B>
using KernelCall = Result (I::*)(const VxImage<T>&, double, double, double, unsigned int, B, T);

template <class T, class B>
constexpr bool hasKernels()
{
    return isA<KernelCall<NearestNeighbor, T, T, B>>(&NearestNeighbor::template operator()<T, B>) &&
           isA<KernelCall<Linear, double, T, B>>(&Linear::template operator()<T, B>) &&
           isA<KernelCall<Cubic, double, T, B>>(&Cubic::template operator()<T, B>);
}

// Front ends: const, and an Interpolator* is spelt in two ways.

template <class Result, class T, class I>
using Borderless = Result (VxImage<T>::*)(double, double, double, int, I) const;

template <class Result, class T, class I, class B>
using Bordered = Result (VxImage<T>::*)(double, double, double, int, I, B, T) const;

template <class T, class I>
constexpr bool hasBorderless()
{
    using Image = VxImage<T>;
    return isA<Borderless<T, T, I>>(&Image::template getValueVoxel<I>) &&
           isA<Borderless<T, T, I>>(&Image::template getValueReal<I>) &&
           isA<Borderless<double, T, I>>(&Image::template getDoubleValueReal<I>);
}

template <class T, class I, class B>
constexpr bool hasBordered()
{
    using Image = VxImage<T>;
    return isA<Bordered<T, T, I, B>>(&Image::template getValueVoxel<I, B>) &&
           isA<Bordered<T, T, I, B>>(&Image::template getValueReal<I, B>) &&
           isA<Bordered<double, T, I, B>>(&Image::template getDoubleValueReal<I, B>);
}

template <class T>
constexpr bool hasRunTimeBorderless()
{
    using Image = VxImage<T>;
    using Pointer = Interpolator*;
    return isA<Borderless<T, T, Pointer>>(&Image::template getValueVoxel<Interpolator>) &&
           isA<Borderless<T, T, Pointer>>(&Image::template getValueReal<Interpolator*>) &&
           isA<Borderless<double, T, Pointer>>(&Image::template getDoubleValueReal<Interpolator*>);
}

template <class T, class B>
constexpr bool hasRunTimeBordered()
{
    using Image = VxImage<T>;
    using Pointer = Interpolator*;
    return isA<Bordered<T, T, Pointer, B>>(&Image::template getValueVoxel<Interpolator, B>) &&
           isA<Bordered<T, T, Pointer, B>>(&Image::template getValueReal<Interpolator*, B>) &&
           isA<Bordered<double, T, Pointer, B>>(
               &Image::template getDoubleValueReal<Interpolator, B>);
}

template <class T, class B>
constexpr bool servesBorder()
{
    return hasKernels<T, B>() && hasBordered<T, NearestNeighbor, B>() &&
           hasBordered<T, Linear, B>() && hasBordered<T, Cubic, B>() && hasRunTimeBordered<T, B>();
}

template <class T>
constexpr bool isServed()
{
    using Plain = T (VxImage<T>::*)(double, double, double, int) const;
    return hasSlots<T>() && hasFetch<T>() && isA<Plain>(&VxImage<T>::getValueReal) &&
           hasBorderless<T, NearestNeighbor>() && hasBorderless<T, Linear>() &&
           hasBorderless<T, Cubic>() && hasRunTimeBorderless<T>() && servesBorder<T, Constant>() &&
           servesBorder<T, Replication>() && servesBorder<T, Border*>();
}

static_assert(isServed<unsigned char>());
static_assert(isServed<short>());
static_assert(isServed<unsigned short>());
static_assert(isServed<int>());
static_assert(isServed<unsigned int>());
static_assert(isServed<float>());
static_assert(isServed<double>());

}  // namespace
}  // namespace volux::core
