#pragma once
/// Import: reads a usage file back into the store.

#include "persist/export.h"
#include "store/store.h"

#include <cstdint>

/// Reads a usage file, rolls its figures forward to today and stores them.
///
/// Profiles in the file get its counters and exactly its applications; unknown ones are created
/// without devices; profiles that it does not name stay as they are. The router-wide statistics
/// become the file's. Limits, devices and policies are not read: the front end configures them.
/// Then everything that is over its limit is blocked again.
///
/// A file that cannot be used leaves the store as it was.
///
/// @param path  null or empty fails
/// @return 0, or -1: with a log line, but silently while the feature is off
int32_t utm_app_import_statistics(const char *path)
    UTM_EXCLUDES(utm_app_export_import_mutex, utm_app_config_mutex);
