#pragma once
/// The usage file: the accounting state as a JSON document.

#include "core/lock.h"

/// The daemon's own file. The folder is the router's to provide.
inline constexpr char usage_file_path[] = "/tmp/ApplicationData/app_usage.json";

/// Serialises exports and imports, each for its whole run. Taken before `utm_app_config_mutex`.
extern utm_mutex_t utm_app_export_import_mutex;
