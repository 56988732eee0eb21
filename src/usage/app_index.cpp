#include "usage/app_index.h"

namespace {

constexpr size_t smallest_capacity = 64;

/// Spreads ids, which engines hand out in runs and in round steps (Fibonacci hashing).
size_t start_slot(const app_index_t *index, int32_t app_id) {
    const uint32_t hash = static_cast<uint32_t>(app_id) * 2654435769U;
    return (hash >> 16 ^ hash) & (index->capacity - 1);
}

/// @return the slot that holds the application, or the free one where it belongs
config_app_usage_t **slot_of(const app_index_t *index, int32_t app_id) UTM_STORE_LOCKED {
    config_app_usage_t **slots = index->slots.get();
    size_t at = start_slot(index, app_id);
    while (slots[at] != nullptr && slots[at]->app_id != app_id)
        at = (at + 1) & (index->capacity - 1);
    return &slots[at];
}

void insert(app_index_t *index, config_app_usage_t *usage) UTM_STORE_LOCKED {
    config_app_usage_t **slot = slot_of(index, usage->app_id);
    if (*slot != nullptr)
        return;
    *slot = usage;
    index->count += 1;
}

/// Builds the table anew, with room for twice the records that the list holds now.
void rebuild(app_index_t *index) UTM_STORE_LOCKED {
    size_t records = 0;
    for ([[maybe_unused]] const auto &usage : list_range<config_app_usage_t>(index->list))
        ++records;
    index->capacity = smallest_capacity;
    while (index->capacity < records * 4)
        index->capacity *= 2;
    index->count = 0;
    index->slots.reset(heap_allocate<config_app_usage_t *>(index->capacity));
    if (index->slots == nullptr)
        return;
    for (config_app_usage_t &usage : list_range<config_app_usage_t>(index->list))
        insert(index, &usage);
}

} // namespace

app_index_t app_index_of(config_list_node_t *list) {
    app_index_t index = {};
    index.list = list;
    rebuild(&index);
    return index;
}

config_app_usage_t *app_index_find(const app_index_t *index, int32_t app_id) {
    if (index->slots == nullptr)
        return utm_app_find_app_usage(index->list, app_id);
    return *slot_of(index, app_id);
}

void app_index_add(app_index_t *index, config_app_usage_t *usage) {
    if (index->slots == nullptr)
        return;
    if ((index->count + 1) * 2 > index->capacity)
        rebuild(index);
    else
        insert(index, usage);
}
