#pragma once
/// `calloc` and `free` behind types. The daemon links no C++ runtime, so there is no `operator
/// new` that could end the process when memory runs out: every allocation may return null.

#include <cstddef>
#include <cstdlib>
#include <memory>

/// Allocates `count` zero-filled objects of a plain type.
///
/// @return the first of them, or null when memory runs out or the size overflows
template <typename T>
[[nodiscard]] T *heap_allocate(size_t count = 1) {
    return static_cast<T *>(calloc(count, sizeof(T)));
}

struct heap_free {
    void operator()(void *memory) const { free(memory); }
};

/// Owns one allocation of `heap_allocate` (or of any C function that says "the caller frees it").
template <typename T>
using heap_ptr = std::unique_ptr<T, heap_free>;
