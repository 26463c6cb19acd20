// The operator new of a test program, which fails where a test says so.
#pragma once

namespace volux::test {

/// The nth operator new of this thread from now fails, once; 0: none. A sanitizer keeps the heap
/// for itself: there none ever does (see AllocationWatch::kWorks).
extern thread_local int newFailsIn;

/// How many blocks of operator new this process holds now; always 0 under a sanitizer.
long liveNews();

}  // namespace volux::test
