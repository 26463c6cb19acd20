// Debian's C++ library for WebAssembly has no exceptions. What would throw one ends the program.
#include <cstddef>
#include <cstdlib>

extern "C" void* __cxa_allocate_exception(std::size_t /*size*/)
{
    std::abort();
}

extern "C" void __cxa_throw(void* /*exception*/, void* /*type*/, void (* /*destroy*/)(void*))
{
    std::abort();
}
