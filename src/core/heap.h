#pragma once
/// Giving memory back to the system.

#include <cstdlib>
#ifdef __GLIBC__
#include <malloc.h>
#endif

/// Gives back what a large piece of work has freed. Only glibc keeps it: the router's C library
/// gives large blocks back by itself.
inline void heap_give_back() {
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}
