#pragma once
/// Export: writes the accounting state to a usage file.

#include "core/lock.h"
#include "core/log_text.h"
#include "store/store.h"

#include <cstdint>

/// Guards the usage file: serialises exports and imports, each for its whole run. Taken before
/// `utm_app_config_mutex`.
extern utm_mutex_t utm_app_export_import_mutex;

/// The caller holds the usage file.
#define UTM_FILE_LOCKED UTM_REQUIRES(utm_app_export_import_mutex)

/// @return a usage file's path as log lines show it
[[nodiscard]] inline log_text_t usage_path_shown(const char *path) {
    return utm_app_log_text(path == nullptr ? "NULL" : path);
}

/// Writes the usage file. The store is locked while the document is built, not while it is
/// written. An attempt counts as an export whether or not the file could be written, so that a
/// failing disk is tried again only after a whole interval.
///
/// @param path   null or empty fails
/// @param force  1 exports although the feature is off, 0 does not
/// @return 0 when the file was written, else -1: with a log line, but silently while the feature
///         is off
int32_t utm_app_export_statistics(const char *path, int32_t force)
    UTM_EXCLUDES(utm_app_export_import_mutex, utm_app_config_mutex);

/// The same without force, for the front end's command and the periodic export.
int32_t utm_app_export_statistics_to(const char *path)
    UTM_EXCLUDES(utm_app_export_import_mutex, utm_app_config_mutex);
