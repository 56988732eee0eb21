#pragma once
/// The library that is preloaded into programs of the simulated machine (sim/preload): the virtual
/// clock, and redirected paths where there is no mount namespace.

#include <string>

/// @return the library of this build, for programs of this machine
std::string sim_built_preload();

/// Lets sanitized programs accept a preloaded library in front of their runtime.
void sim_accept_preload();

/// Preloads a library into the program that this process executes, beside what is preloaded.
///
/// @param library  need not be of this machine: an emulated program takes its own, and each loader
///                 passes over the other's
/// @param link     where a link to the library is put: the loader takes a blank or a colon in a
///                 path of LD_PRELOAD for the end of it, and a build folder's path may hold either
void sim_preload(const std::string &library, const std::string &link);

/// @return the path by which a program that is not redirected reaches the same file: a loader, a
/// sanitizer's runtime. Outside of a redirected sandbox the path itself.
std::string sim_outside(const std::string &path);

/// Adds to a list in an environment variable.
void sim_add_to_variable(const char *name, char separator, const std::string &text);
