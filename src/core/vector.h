#pragma once
/// `std::vector` without the C++ runtime.

#include <cstddef>
#include <cstdlib>
#include <type_traits>

/// Owns its elements, which are plain data. When memory runs out it stays as it was.
template <typename T>
class plain_vector {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    plain_vector() = default;
    ~plain_vector() { free(elements_); }
    plain_vector(const plain_vector &) = delete;
    plain_vector &operator=(const plain_vector &) = delete;

    /// @return false when memory ran out
    [[nodiscard]] bool add(const T &element) {
        if (size_ == room_ && !make_room())
            return false;
        elements_[size_++] = element;
        return true;
    }

    /// Forgets the elements, and keeps their room.
    void clear() { size_ = 0; }

    /// Keeps the first ones.
    /// @param size  at most as many as there are
    void keep(size_t size) { size_ = size; }

    size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    T &operator[](size_t index) { return elements_[index]; }
    const T &operator[](size_t index) const { return elements_[index]; }
    T *begin() { return elements_; }
    T *end() { return elements_ + size_; }
    const T *begin() const { return elements_; }
    const T *end() const { return elements_ + size_; }

private:
    bool make_room() {
        const size_t room = room_ == 0 ? 16 : room_ * 2;
        void *larger = reallocarray(elements_, room, sizeof(T));
        if (larger == nullptr)
            return false;
        elements_ = static_cast<T *>(larger);
        room_ = room;
        return true;
    }

    T *elements_ = nullptr;
    size_t size_ = 0;
    size_t room_ = 0;
};
