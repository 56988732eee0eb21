/// Usage files that a report is made of: whatever a file holds, there is a message or a page that
/// is well-formed.
///
/// An input is the text of a file.

#include "client/report.h"
#include "tests/fuzz/client_output.h"
#include "tests/fuzz/json_mutator.h"
#include "tests/fuzz/text_checks.h"

#include <ctime>
#include <memory>

namespace {

std::unique_ptr<fuzz::input_file_t> usage_file;
ctl_app_names names;

/// What a page must not take for its own markup.
constexpr char odd_names[] = "305 <b>&\"video\"</b>\n"
                             "306 '/><script>\n"
                             "0 \xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d\n";

void read_odd_names() {
    fuzz::input_file_t file("/tmp/fuzz_names");
    file.write(odd_names);
    fuzz::check(ctl_read_names(file.path(), &names) == CTL_DONE, "the names cannot be read");
}

} // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *bytes, size_t size, size_t most, unsigned seed) {
    return fuzz::mutate_json(bytes, size, most, seed);
}

extern "C" int LLVMFuzzerInitialize(int *, char ***arguments) {
    fuzz::enter_sandbox(*arguments);
    fuzz::silence_messages();
    setenv("TZ", "UTC0", 1);
    tzset();
    read_odd_names();
    usage_file = std::make_unique<fuzz::input_file_t>("/tmp/fuzz_usage.json");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    usage_file->write(std::string(bytes, bytes + size));
    fuzz::memory_stream_t page;
    const ctl_exit status = ctl_write_report(page.get(), usage_file->path(), names);
    const std::string text = page.text();
    if (status == CTL_DONE)
        fuzz::check_html(text);
    else
        fuzz::check(status == CTL_USAGE && text.empty(), "a part of a page after a refusal");
    return 0;
}
