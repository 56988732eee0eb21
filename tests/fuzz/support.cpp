#include "tests/fuzz/support.h"

#include "sim/harness/files.h"
#include "sim/harness/sandbox.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

/// Short stacks and a small quarantine make an allocation twice as fast; what was freed is still
/// kept for longer than any input runs.
extern "C" const char *__asan_default_options() {
    return "malloc_context_size=2:quarantine_size_mb=16";
}

namespace fuzz {

void enter_sandbox(char **arguments) {
    sim_enter_sandbox(arguments, {UTM_BUILD_DIR, UTM_SOURCE_DIR});
}

void fail(const std::string &what) {
    // A fuzzer may have put something else in the place of the standard streams.
    const std::string line = "FOUND: " + what + "\n";
    static_cast<void>(!::write(STDERR_FILENO, line.data(), line.size()));
    abort();
}

std::string reader_t::text_until(char separator) {
    const uint8_t *found = std::find(next_, end_, static_cast<uint8_t>(separator));
    std::string text(next_, found);
    next_ = found == end_ ? end_ : found + 1;
    return text;
}

input_file_t::input_file_t(const char *path)
    : path_(path), fd_(open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)) {
    check(fd_ >= 0, "a file in the private /tmp cannot be made");
}

input_file_t::~input_file_t() {
    close(fd_);
}

void input_file_t::write(const std::string &text) {
    check(ftruncate(fd_, 0) == 0 &&
              pwrite(fd_, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
          "a file in the private /tmp cannot be written");
}

std::string read_file(const char *path) {
    return sim_read_file(path);
}

} // namespace fuzz
