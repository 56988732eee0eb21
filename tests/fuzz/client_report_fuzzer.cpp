/// Usage files that a report is made of: whatever a file holds, there is a message or a page that
/// is well-formed.
///
/// An input is the text of a file.

#include "client/household_file.h"
#include "client/person_page.h"
#include "client/report.h"
#include "tests/fuzz/client_output.h"
#include "tests/fuzz/json_mutator.h"
#include "tests/fuzz/text_checks.h"

#include <ctime>
#include <memory>

namespace {

std::unique_ptr<fuzz::input_file_t> usage_file;
household_t household;

/// What a page must not take for its own markup.
constexpr char odd_names[] = R"({
    "applications": [ { "number": 305, "name": "<b>&\"video\"</b>" },
                      { "number": 306, "name": "'/><script>" },
                      { "number": 307, "name": "\u05e9\u05dc\u05d5\u05dd" } ],
    "people": [ { "number": 3, "name": "</h2><script>", "applications": [
                    { "name": "305", "rule": "45m" }, { "name": "306", "rule": "blocked" } ] },
                { "number": 1, "name": "\u05e9'&\"" } ] })";

void read_odd_names() {
    fuzz::input_file_t file("/tmp/fuzz_names");
    file.write(odd_names);
    fuzz::check(ctl_read_names_of_household(file.path(), nullptr, &household) == CTL_DONE &&
                    household.people.size() == 2,
                "the household cannot be read");
}

/// Whatever the file holds, the page is well-formed or there is none.
template <typename Write>
void check_page(Write write) {
    fuzz::memory_stream_t page;
    const ctl_exit status = write(page.get());
    const std::string text = page.text();
    if (status == CTL_DONE)
        fuzz::check_html(text);
    else
        fuzz::check(status == CTL_USAGE && text.empty(), "a part of a page after a refusal");
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
    check_page([](FILE *page) { return ctl_write_report(page, usage_file->path(), household); });
    for (const int32_t number : {1, 3})
        check_page([number](FILE *page) {
            ctl_person_day day = {};
            const ctl_exit status =
                ctl_read_person_day(usage_file->path(), household, number, &day);
            if (status == CTL_DONE)
                ctl_write_person_page(page, day, household);
            return status;
        });
    return 0;
}
