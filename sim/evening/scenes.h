#pragma once
/// The evening, a function per scene, in the order in which they are played.

#include "sim/evening/stage.h"

#include <vector>

struct scene_entry {
    const char *title;
    void (*play)(stage *set);
};

const std::vector<scene_entry> &evening_scenes();
