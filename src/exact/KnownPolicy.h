// Which of the library's own policies an address leads to; both libraries ask here.
#pragma once

#include <typeinfo>

namespace volux::exact {

// Whether a policy is a Known itself, and not an object of a derived class; null is not. The
// addresses of the type_info are compared, because a policy compiled without run-time type
// information has none, and == would read it. A Known of another copy of volux_core is taken for a
// policy of the caller's, with the same bits.
template <class Known, class Base>
bool isExactly(const Base* policy)
{
    return policy != nullptr && &typeid(*policy) == &typeid(Known);
}

}  // namespace volux::exact
