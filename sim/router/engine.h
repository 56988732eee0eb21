#pragma once
/// The command lines of the packet inspection engine's shell, to the letter: for the fake of it,
/// and for tests that keep an engine's state themselves.

#include <cstdint>
#include <string>
#include <vector>

enum class engine_verb {
    none, ///< no such command
    guard_on,
    guard_off,
    block,
    unblock,
    reset,
    load
};

struct engine_command {
    engine_verb verb = engine_verb::none;
    std::string mac = {}; ///< upper case with colons, of the three that are for a device
    int32_t app_id = 0;   ///< of the first two of them
    std::string path = {};
};

/// @param words  of a command line, the shell's own name left out
engine_command engine_command_of(const std::vector<std::string> &words);
