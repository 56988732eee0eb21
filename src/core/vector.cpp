#include "core/vector.h"

#include <cstring>

namespace {

bool make_room(plain_vector_rows *rows, size_t element) {
    const size_t room = rows->room == 0 ? 16 : rows->room * 2;
    void *larger = reallocarray(rows->elements, room, element);
    if (larger == nullptr)
        return false;
    rows->elements = larger;
    rows->room = room;
    return true;
}

} // namespace

bool plain_vector_add(plain_vector_rows *rows, const void *added, size_t element) {
    if (rows->size == rows->room && !make_room(rows, element))
        return false;
    memcpy(static_cast<char *>(rows->elements) + rows->size * element, added, element);
    ++rows->size;
    return true;
}
