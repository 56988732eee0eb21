#pragma once
/// The usage file without the daemon: its data in plain arrays, and json-c alone to write it.

#include "format/usage_file.h"

#include <cstdint>
#include <string>
#include <vector>

struct plain_profile_t {
    usage_profile_t figures;
    std::vector<usage_app_t> apps;
    std::vector<std::string> devices;
    int32_t policy_id;
    std::vector<config_policy_rule_t> rules;
};

struct plain_document_t {
    std::vector<plain_profile_t> profiles;
    std::vector<usage_app_t> router;
};

/// @return a copy of the daemon's store
plain_document_t plain_document_of_store();

/// Builds the document with json-c, writes it and releases it.
/// @return 0, or json-c's -1
int plain_document_write(const plain_document_t &document, int32_t timestamp, const char *path);
