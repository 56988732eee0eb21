#include "persist/profile_index.h"

#include "format/usage_file.h"

#include <algorithm>
#include <cstdlib>

namespace {

/// Of one id, the store's own profile comes first: it is the one that is found.
int compare_entries(const void *left_entry, const void *right_entry) {
    const auto &left = *static_cast<const profile_entry_t *>(left_entry);
    const auto &right = *static_cast<const profile_entry_t *>(right_entry);
    if (left.profile_id != right.profile_id)
        return left.profile_id < right.profile_id ? -1 : 1;
    return (left.profile == nullptr) - (right.profile == nullptr);
}

size_t count_profiles() UTM_STORE_LOCKED {
    size_t count = 0;
    for ([[maybe_unused]] const config_user_profile_t &profile : all_profiles())
        ++count;
    return count;
}

void fill(profile_index_t *index, json_object *list) UTM_STORE_LOCKED {
    profile_entry_t *next = index->entries.get();
    for (config_user_profile_t &profile : all_profiles())
        *next++ = {profile.user_profile_id, &profile};
    const size_t in_file = json_array_size(list);
    for (size_t i = 0; i < in_file; ++i) {
        profile_entry_t entry = {0, nullptr};
        if (usage_read_profile_id(json_object_array_get_idx(list, i), &entry.profile_id))
            *next++ = entry;
    }
    index->count = static_cast<size_t>(next - index->entries.get());
    if (index->count > 1)
        qsort(index->entries.get(), index->count, sizeof(profile_entry_t), compare_entries);
}

/// @return the first entry of an id
profile_entry_t *entry_of(const profile_index_t &index, int32_t profile_id) {
    profile_entry_t *const begin = index.entries.get();
    return std::lower_bound(
        begin, begin + index.count, profile_id,
        [](const profile_entry_t &entry, int32_t id) { return entry.profile_id < id; });
}

} // namespace

profile_index_t profile_index_of(json_object *list) {
    profile_index_t index = {};
    const size_t most = count_profiles() + json_array_size(list);
    index.entries.reset(heap_allocate<profile_entry_t>(most));
    if (index.entries != nullptr)
        fill(&index, list);
    return index;
}

config_user_profile_t *profile_index_find(const profile_index_t &index, int32_t profile_id) {
    return index.entries == nullptr ? utm_app_find_profile(profile_id)
                                    : entry_of(index, profile_id)->profile;
}

void profile_index_add(const profile_index_t &index, config_user_profile_t *profile) {
    if (index.entries != nullptr)
        entry_of(index, profile->user_profile_id)->profile = profile;
}
