// Memory that the address sanitizer of clang++ forbids to touch; elsewhere nothing is forbidden.
#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VOLUX_TEST_ADDRESS_SANITIZER 1
#endif
#endif

#ifdef VOLUX_TEST_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, bytes) (static_cast<void>(0))
#define ASAN_UNPOISON_MEMORY_REGION(address, bytes) (static_cast<void>(0))
#endif
