#pragma once
/// An index over the store's profiles and those of a usage file, for the time of one import.
///
/// Looking each profile of a file up by walking the store's list would make an import quadratic.
/// The ids are sorted rather than hashed: a file's ids are anybody's choice.

#include "core/json.h"
#include "core/owners.h"
#include "store/store.h"

#include <cstddef>
#include <cstdint>

struct profile_entry_t {
    int32_t profile_id;
    config_user_profile_t *profile; ///< null while the store has none of this id
};

/// Sorted by id. Without memory for it `entries` is null and look-ups walk the list.
struct profile_index_t {
    heap_ptr<profile_entry_t> entries;
    size_t count;
};

/// @param list  a file's profiles, or null
/// @return an index that is valid until the list changes other than by `profile_index_add`
[[nodiscard]] profile_index_t profile_index_of(json_object *list) UTM_STORE_LOCKED;

/// @return what `utm_app_find_profile` finds, for an id that the file has
[[nodiscard]] config_user_profile_t *profile_index_find(const profile_index_t &index,
                                                        int32_t profile_id) UTM_STORE_LOCKED;

/// Takes in a profile of the file that was just linked into the store.
void profile_index_add(const profile_index_t &index,
                       config_user_profile_t *profile) UTM_STORE_LOCKED;
