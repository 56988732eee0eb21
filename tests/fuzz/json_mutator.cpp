#include "tests/fuzz/json_mutator.h"

#include <cstring>
#include <json-c/json.h>
#include <random>
#include <string>
#include <vector>

extern "C" size_t LLVMFuzzerMutate(uint8_t *bytes, size_t size, size_t most);

namespace fuzz {

namespace {

using random_t = std::minstd_rand;

/// Where a value stands: a member of an object or an element of a list.
struct place_t {
    json_object *container;
    std::string key;
    size_t index;

    bool is_member() const { return json_object_is_type(container, json_type_object) != 0; }

    json_object *value() const {
        return is_member() ? json_object_object_get(container, key.c_str())
                           : json_object_array_get_idx(container, index);
    }
    void put(json_object *value) const {
        if (is_member())
            json_object_object_add(container, key.c_str(), value);
        else
            json_object_array_put_idx(container, index, value);
    }
    void remove() const {
        if (is_member())
            json_object_object_del(container, key.c_str());
        else
            json_object_array_del_idx(container, index, 1);
    }
};

using places_t = std::vector<place_t>;

void collect(json_object *value, places_t *places) {
    if (json_object_is_type(value, json_type_object) != 0) {
        json_object_object_foreach(value, key, member) {
            places->push_back({value, key, 0});
            collect(member, places);
        }
    } else if (json_object_is_type(value, json_type_array) != 0) {
        for (size_t i = 0; i < json_object_array_length(value); ++i) {
            places->push_back({value, {}, i});
            collect(json_object_array_get_idx(value, i), places);
        }
    }
}

json_object *odd_value(random_t *random) {
    static constexpr const char *values[] = {
        "0",           "1",
        "-1",          "29",
        "30",          "31",
        "306",         "7",
        "2147483647",  "2147483648",
        "-2147483648", "1e9",
        "1e999",       "-0.5",
        "null",        "true",
        "[]",          "{}",
        "\"12\"",      "\"\"",
        "NaN",         "9223372036854775807",
        "1772625600",  "\"\\u001b[2J\"",
        "\"<b>&\"",
    };
    return json_tokener_parse(values[(*random)() % std::size(values)]);
}

json_object *copy_of(json_object *value) {
    json_object *copy = nullptr;
    return value != nullptr && json_object_deep_copy(value, &copy, nullptr) == 0 ? copy : nullptr;
}

void mutate(json_object *root, random_t *random) {
    places_t places;
    collect(root, &places);
    if (places.empty())
        return;
    const place_t &place = places[(*random)() % places.size()];
    const place_t &other = places[(*random)() % places.size()];
    switch ((*random)() % 5) {
    case 0:
        return place.remove();
    case 1:
        // A copy, since the place may be inside of what it gets.
        return place.put(copy_of(other.value()));
    case 2:
        // One more in a list, or a member in another's object.
        if (place.is_member())
            json_object_object_add(place.container,
                                   other.is_member() ? other.key.c_str() : "timestamp",
                                   copy_of(place.value()));
        else
            json_object_array_add(place.container, copy_of(other.value()));
        return;
    default:
        return place.put(odd_value(random));
    }
}

} // namespace

size_t mutate_json(uint8_t *bytes, size_t size, size_t most, unsigned seed) {
    random_t random(seed);
    random.discard(2); // seeds that are close to each other begin alike
    const std::string text(bytes, bytes + size);
    json_object *root = random() % 3 == 0 ? nullptr : json_tokener_parse(text.c_str());
    if (root == nullptr)
        return LLVMFuzzerMutate(bytes, size, most);
    for (size_t left = 1 + random() % 3; left > 0; --left)
        mutate(root, &random);
    const std::string mutated = json_object_to_json_string_ext(root, JSON_C_TO_STRING_PLAIN);
    json_object_put(root);
    if (mutated.size() > most)
        return LLVMFuzzerMutate(bytes, size, most);
    memcpy(bytes, mutated.data(), mutated.size());
    return mutated.size();
}

} // namespace fuzz
