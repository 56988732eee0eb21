#pragma once
/// How the calls that this library replaces reach the real ones.

#include <dlfcn.h>

/// Gives a call of this library to programs that it is preloaded into.
#define SIM_EXPORTED __attribute__((visibility("default")))

/// @return the next definition of a call after this library's own, which a sanitizer may hold
template <class Function>
Function sim_next(const char *name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

/// Defines a call under its own name, which leads to the next definition with other arguments.
///
/// The name is an assembler label: libc's declarations differ between C libraries in attributes
/// that a definition would have to repeat, and some are macros.
#define SIM_CALL(result, name, parameters, arguments)                                              \
    SIM_DEFINE(result, name, parameters) {                                                         \
        static const auto next = sim_next<result(*) parameters>(#name);                            \
        return next arguments;                                                                     \
    }

/// Begins the definition of a call under its own name.
#define SIM_DEFINE(result, name, parameters)                                                       \
    extern "C" SIM_EXPORTED result sim_##name parameters __asm__(#name);                           \
    extern "C" result sim_##name parameters

/// The same as SIM_CALL for one that glibc also has under a second name, for large files. Their
/// structs only pass through, so their types do not matter.
#ifdef __GLIBC__
#define SIM_CALL_64(result, name, parameters, arguments)                                           \
    SIM_CALL(result, name, parameters, arguments)                                                  \
    SIM_CALL(result, name##64, parameters, arguments)
#else
#define SIM_CALL_64(result, name, parameters, arguments)                                           \
    SIM_CALL(result, name, parameters, arguments)
#endif
