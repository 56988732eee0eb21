#pragma once
/// A scenario: who has which device, and what is used on it from when to when. README.md describes
/// the file.

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

struct scenario_person {
    std::string handle; ///< as the file refers to it
    int32_t profile_id;
    std::string name;
};

struct scenario_device {
    std::string handle;
    std::string mac; ///< upper case with colons
    size_t person;   ///< index into `people`
    std::string name;
};

struct scenario_app {
    std::string handle;
    int32_t id;
    std::string name;
};

/// A stretch of time, its end not included.
struct scenario_span {
    time_t from;
    time_t to;
};

/// A device that is online, for an application's sake or for no particular one.
struct scenario_use {
    static constexpr size_t NO_APP = SIZE_MAX;
    size_t device; ///< index into `devices`
    size_t app;    ///< index into `apps`, or NO_APP
    scenario_span span;
};

struct scenario {
    std::vector<scenario_person> people;
    std::vector<scenario_device> devices;
    std::vector<scenario_app> apps;
    std::vector<scenario_use> uses;
};

/// Reads a scenario file; one that does not exist is an empty scenario.
/// @param error  on failure, "<path>:<line>: <what is wrong>"
[[nodiscard]] bool scenario_read(const std::string &path, scenario *result, std::string *error);
