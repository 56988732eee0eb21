#include "bench/memory.h"

#include "bench/ratios.h"
#include "store/store.h"

#include <cstring>
#include <malloc.h>

namespace {

constexpr double memory_budget = 1.3;

size_t heap_in_use() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// @return the bytes of a list's records
template <typename Record>
size_t sim_bytes(list_range<Record> records) {
    size_t bytes = 0;
    for ([[maybe_unused]] const Record &record : records)
        bytes += sizeof(Record);
    return bytes;
}

/// @return the bytes of every record, the device list strings among them
size_t bytes_of_records() {
    const mutex_guard lock(utm_app_config_mutex);
    size_t bytes = sim_bytes(all_profiles()) + sim_bytes(all_policies()) + sim_bytes(global_apps());
    for (config_user_profile_t &profile : all_profiles()) {
        bytes += sim_bytes(weekdays_of(&profile)) + sim_bytes(devices_of(&profile)) +
                 sim_bytes(apps_of(&profile));
        if (profile.device_list_string != nullptr)
            bytes += strlen(profile.device_list_string) + 1;
    }
    for (config_app_policy_t &policy : all_policies())
        bytes += sim_bytes(rules_of(&policy));
    return bytes;
}

} // namespace

bool memory_print(const household_size_t &size) {
    household_clear();
    const size_t before = heap_in_use();
    household_build(size);
    const size_t after = heap_in_use();
    const bool kept =
        ratio_print(std::string("memory/") + size.name, static_cast<double>(after - before) / 1024,
                    static_cast<double>(bytes_of_records()) / 1024, "KiB", memory_budget);
    household_clear();
    return kept;
}
