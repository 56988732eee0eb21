#pragma once
/// An index over a list of usage records, for the time of one statistics reply.
///
/// A reply names hundreds of applications and the list holds hundreds of records: looking each
/// one up by walking the list would make a tick quadratic. The list keeps its order and stays
/// what counts; the index is thrown away after the reply.

#include "core/owners.h"
#include "store/store.h"

#include <cstddef>
#include <cstdint>

/// A hash table with open addressing, at most half full. Without memory for it `slots` is null
/// and look-ups walk the list.
struct app_index_t {
    config_list_node_t *list;
    heap_ptr<config_app_usage_t *> slots;
    size_t capacity; ///< slots, a power of two
    size_t count;    ///< slots taken
};

/// Indexes a list; of several records of one application, the first in list order counts.
/// @return an index that is valid until the list changes other than by `app_index_add`
[[nodiscard]] app_index_t app_index_of(config_list_node_t *list) UTM_STORE_LOCKED;

/// @return what `utm_app_find_app_usage` finds in the index's list, or null
[[nodiscard]] config_app_usage_t *app_index_find(const app_index_t *index,
                                                 int32_t app_id) UTM_STORE_LOCKED;

/// Takes in a record that was just linked into the list and whose application was not in it.
void app_index_add(app_index_t *index, config_app_usage_t *usage) UTM_STORE_LOCKED;
