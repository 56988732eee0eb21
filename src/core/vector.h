#pragma once
/// `std::vector` without the C++ runtime.

#include <cstddef>
#include <cstdlib>
#include <type_traits>

/// What all of them do in the same way, so that a program has it once.
struct plain_vector_rows {
    void *elements = nullptr;
    size_t size = 0;
    size_t room = 0;
};

/// @param element  bytes of one
/// @return false when memory ran out
[[nodiscard]] bool plain_vector_add(plain_vector_rows *rows, const void *added, size_t element);

/// Owns its elements, which are plain data. When memory runs out it stays as it was.
template <typename T>
class plain_vector {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    plain_vector() = default;
    ~plain_vector() { free(rows_.elements); }
    plain_vector(const plain_vector &) = delete;
    plain_vector &operator=(const plain_vector &) = delete;

    /// @return false when memory ran out
    [[nodiscard]] bool add(const T &element) {
        return plain_vector_add(&rows_, &element, sizeof(element));
    }

    /// Forgets the elements, and keeps their room.
    void clear() { rows_.size = 0; }

    /// Keeps the first ones.
    /// @param size  at most as many as there are
    void keep(size_t size) { rows_.size = size; }

    size_t size() const { return rows_.size; }
    bool empty() const { return size() == 0; }
    T &operator[](size_t index) { return begin()[index]; }
    const T &operator[](size_t index) const { return begin()[index]; }
    T *begin() { return static_cast<T *>(rows_.elements); }
    T *end() { return begin() + size(); }
    const T *begin() const { return static_cast<const T *>(rows_.elements); }
    const T *end() const { return begin() + size(); }

private:
    plain_vector_rows rows_;
};
