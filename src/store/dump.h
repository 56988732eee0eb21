#pragma once
/// The diagnostic dump: the whole store as text in the debug log.

#include "store/store.h"

/// Writes every profile and the router-wide statistics to the debug log. It is called from a
/// debugger; no command and no tick calls it. Each piece of a line is a write of its own, so that
/// each one sees the log's size limit; the store stays locked for the whole dump.
///
/// The name is C's and the linker is told to keep it, so that `call utm_app_dump_store()` works in
/// a debugger on the router.
extern "C" void utm_app_dump_store() UTM_EXCLUDES(utm_app_config_mutex);
