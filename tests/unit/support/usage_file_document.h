#pragma once
/// Usage files as values: a second writer of the format, which shares nothing with the daemon's.
///
/// A test says what stands in a file, and `text` writes it as the daemon does. An edit replaces or
/// takes out one value anywhere in the document, to see what a reader makes of it.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace usage_file {

/// An application's figures.
struct app_t {
    int32_t id = 0;
    int32_t daily = 0;
    int32_t weekly = 0;
    int32_t monthly = 0;
    int32_t next = 0;
    std::vector<int32_t> ring = std::vector<int32_t>(30, 0);
};

struct rule_t {
    int32_t app_id = 0;
    int32_t action = 0;
    int32_t limit = 0;
};

struct policy_t {
    int32_t id = 0;
    std::vector<rule_t> rules = {};
};

struct profile_t {
    int32_t id = 0;
    int32_t daily = 0;
    int32_t weekly = 0;
    int32_t monthly = 0;
    std::vector<app_t> apps = {};
    std::vector<int32_t> weekdays = std::vector<int32_t>(7, 1440); ///< "mon" first
    int32_t extend = 0;
    int32_t blocked = 0;
    std::vector<std::string> devices = {};
    std::optional<policy_t> policy = {};
};

struct document_t {
    std::vector<profile_t> profiles = {};
    int64_t timestamp = 0;
    std::vector<app_t> router = {};
};

/// @return a document as the daemon writes it
std::string text(const document_t &document);

/// An application alone.
std::string text(const app_t &app);

/// Every value of a document but the root, in the order in which they are written: each member's
/// and each array element's, such as "user_profile_list[0].app_stat_list[1].daily_used".
std::vector<std::string> places(const document_t &document);

/// @param place  index into `places`
/// @param value  JSON text that takes the value's place
/// @return the document with one value replaced
std::string text_with(const document_t &document, size_t place, const std::string &value);

/// @return the document without one value: a member goes with its key
std::string text_without(const document_t &document, size_t place);

} // namespace usage_file
