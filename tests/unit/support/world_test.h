#pragma once
/// The base of the tests that start from an empty world.

#include "tests/lib/world.h"

#include <gtest/gtest.h>

class world_test : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};
