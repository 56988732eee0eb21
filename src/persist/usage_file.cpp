#include "persist/usage_file.h"

utm_mutex_t utm_app_export_import_mutex;
