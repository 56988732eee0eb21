/// Calls by rpcd: whatever its clients send, the command line that comes of it has the options that
/// a method may have, two dashes, the command, and nothing else but operands.
///
/// An input is the name of a method, a line end, and its arguments.

#include "client/rpcd.h"
#include "tests/fuzz/client_output.h"
#include "tests/fuzz/json_mutator.h"
#include "tests/fuzz/support.h"

#include <cstring>
#include <string>

extern "C" size_t LLVMFuzzerMutate(uint8_t *bytes, size_t size, size_t most);

namespace {

constexpr const char *options[] = {"--history", "--weeks", "--dry-run", "--prune", "--repair"};
constexpr const char *verbs[] = {"status", "people", "usage", "extend", "apply"};

template <size_t count>
bool is_one_of(const char *const (&known)[count], const char *word) {
    for (const char *one : known)
        if (strcmp(one, word) == 0)
            return true;
    return false;
}

void check_line(const ctl_rpcd_line &line) {
    fuzz::check(line.count <= ctl_rpcd_line::words_max, "too many words");
    fuzz::check(line.words[line.count] == nullptr, "a line without an end");
    fuzz::check(strcmp(line.words[1], "--json") == 0, "no JSON is asked for");
    int at = 4;
    while (at < line.count && strcmp(line.words[at], "--") != 0)
        fuzz::check(is_one_of(options, line.words[at++]), "an option that no method has");
    fuzz::check(at + 1 < line.count, "no command behind two dashes");
    fuzz::check(is_one_of(verbs, line.words[at + 1]), "another command");
    for (int i = at + 1; i < line.count; ++i)
        fuzz::check(line.words[i][0] != '\0', "an operand that is empty");
}

size_t arguments_of(const uint8_t *bytes, size_t size) {
    const void *line_end = memchr(bytes, '\n', size);
    return line_end == nullptr
               ? size
               : static_cast<size_t>(static_cast<const uint8_t *>(line_end) - bytes) + 1;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***arguments) {
    fuzz::enter_sandbox(*arguments);
    fuzz::silence_messages();
    return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *bytes, size_t size, size_t most, unsigned seed) {
    const size_t start = arguments_of(bytes, size);
    // Now and then the method, too.
    if (start == most || seed % 8 == 0)
        return LLVMFuzzerMutate(bytes, size, most);
    return start + fuzz::mutate_json(bytes + start, size - start, most - start, seed);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    const std::string input(bytes, bytes + size);
    const size_t start = arguments_of(bytes, size);
    const std::string method = input.substr(0, input.find('\n'));
    ctl_rpcd_line line;
    const ctl_exit status =
        ctl_rpcd_call(method.c_str(), input.data() + start, size - start, &line);
    ctl_said().clear();
    if (status == CTL_DONE)
        check_line(line);
    else
        fuzz::check(status == CTL_USAGE && line.count == 0, "a call that is refused and made");
    return 0;
}
