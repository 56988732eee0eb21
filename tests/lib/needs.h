#pragma once
/// Tests that cannot run on every machine.

#include <gtest/gtest.h>

/// Leaves a test out, with the name of the capability that the machine lacks, as
/// `scripts/capabilities` prints it. `scripts/test` fails when the machine has it after all, so
/// `probe` and that script have to agree. What a build can never run is not compiled into it.
///
/// @param capability  a text literal, such as "pseudo-terminals"
/// @param probe       whether the test can run here
#define UTM_NEEDS(capability, probe)                                                               \
    if (!(probe))                                                                                  \
    GTEST_SKIP() << "needs " capability ": " #probe " is false"
