#pragma once
/// The usage file without the daemon: its data in plain arrays, and json-c alone to write it.

#include <cstdint>
#include <string>
#include <vector>

struct plain_app_t {
    int32_t app_id;
    int32_t daily_used;
    int32_t weekly_used;
    int32_t monthly_used;
    int32_t next_day_idx;
    int32_t prev_30_days[30];
};

struct plain_rule_t {
    int32_t app_id;
    int32_t action;
    int32_t daily_limit;
};

struct plain_profile_t {
    int32_t id;
    int32_t weekdays[7];
    int32_t daily_extend;
    int32_t daily_used;
    int32_t weekly_used;
    int32_t monthly_used;
    int32_t blocked;
    std::vector<plain_app_t> apps;
    std::vector<std::string> devices;
    int32_t policy_id;
    std::vector<plain_rule_t> rules;
};

struct plain_document_t {
    std::vector<plain_profile_t> profiles;
    std::vector<plain_app_t> router;
};

/// @return a copy of the daemon's store
plain_document_t plain_document_of_store();

/// Builds the document with json-c, writes it and releases it.
/// @return 0, or json-c's -1
int plain_document_write(const plain_document_t &document, int32_t timestamp, const char *path);
