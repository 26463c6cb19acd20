// From the tag of an element type to the type.
#pragma once

#include "volux/core/DataType.h"
#include "volux/core/detail/ElementTypes.inc"

namespace volux::exact {

// Stands for an element type where a function is called with one.
template <class T>
struct Element {
    using Type = T;
};

// Calls `function` with the Element that a tag names.
template <class Function>
decltype(auto) withElementType(core::DataType type, const Function& function)
{
    switch (type) {
#define VOLUX_CASE(T)              \
    case core::detail::tagOf<T>(): \
        return function(Element<T>());
        VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_CASE)
#undef VOLUX_CASE
    }
    __builtin_unreachable();  // there is no other tag
}

}  // namespace volux::exact

#undef VOLUX_FOR_EACH_ELEMENT_TYPE
