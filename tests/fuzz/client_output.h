#pragma once
/// What the client writes, instead of on the terminal.

#include "tests/fuzz/support.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

/// A stream whose text can be had.
class memory_stream_t {
public:
    memory_stream_t() : stream_(open_memstream(&text_, &size_)) {
        check(stream_ != nullptr, "there is no memory");
    }
    ~memory_stream_t() {
        fclose(stream_);
        free(text_);
    }
    memory_stream_t(const memory_stream_t &) = delete;
    memory_stream_t &operator=(const memory_stream_t &) = delete;

    FILE *get() { return stream_; }
    std::string text() {
        fflush(stream_);
        return {text_, size_};
    }

private:
    char *text_ = nullptr;
    size_t size_ = 0;
    FILE *stream_;
};

/// The client complains of most inputs; nobody reads it. libFuzzer keeps a stream of its own.
inline void silence_messages() {
    FILE *nowhere = fopen("/dev/null", "w");
    check(nowhere != nullptr, "there is no /dev/null");
    stderr = nowhere;
}

} // namespace fuzz
