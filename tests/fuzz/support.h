#pragma once
/// What the fuzzers share.

#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzz {

/// Enters the private /tmp, where the paths that are compiled in meet nobody else's files. Called
/// first by every fuzzer that touches a file. The tree and the build's folder stay reachable.
void enter_sandbox(char **arguments);

/// Ends the program with a sentence, so that the input is kept.
[[noreturn]] void fail(const std::string &what);

inline void check(bool holds, const char *otherwise) {
    if (!holds)
        fail(otherwise);
}

/// Takes an input apart. At its end it gives zeros, so every input is a whole one.
class reader_t {
public:
    reader_t(const uint8_t *bytes, size_t size) : next_(bytes), end_(bytes + size) {}

    bool is_at_end() const { return next_ == end_; }
    size_t left() const { return static_cast<size_t>(end_ - next_); }
    uint8_t byte() { return is_at_end() ? uint8_t{0} : *next_++; }
    /// @return the bytes up to and without a separator, or all that are left
    std::string text_until(char separator);

private:
    const uint8_t *next_;
    const uint8_t *end_;
};

/// A file of the private /tmp whose content changes with every input.
class input_file_t {
public:
    /// @param path  where it is put, or put anew
    explicit input_file_t(const char *path);
    ~input_file_t();
    input_file_t(const input_file_t &) = delete;
    input_file_t &operator=(const input_file_t &) = delete;

    const char *path() const { return path_; }
    void write(const std::string &text);

private:
    const char *path_;
    int fd_;
};

/// @return a file's bytes; none when there is no such file
std::string read_file(const char *path);

} // namespace fuzz
