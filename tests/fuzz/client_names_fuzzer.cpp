/// Files of application names: whatever a file holds, names are clean, are found again, and do not
/// break JSON.
///
/// An input is the text of a file.

#include "client/names.h"
#include "client/output.h"
#include "client/page.h"
#include "core/text.h"
#include "format/spelling.h"
#include "tests/fuzz/client_output.h"
#include "tests/fuzz/text_checks.h"

#include <cstring>
#include <memory>
#include <utility>

namespace {

std::unique_ptr<fuzz::input_file_t> names_file;

/// @return the first name that the list has for an application
const char *first_name_of(const ctl_app_names &names, int32_t app_id) {
    for (size_t i = 0; i < names.size(); ++i)
        if (names[i].app_id == app_id)
            return names[i].name;
    return nullptr;
}

void check_look_ups(const ctl_app_names &names, const ctl_app_name &entry) {
    fuzz::check(ctl_find_name(names, entry.app_id) == first_name_of(names, entry.app_id),
                "an application has another line's name");
    int32_t found = 0;
    int32_t number = 0;
    fuzz::check(ctl_find_app(names, entry.name, &found), "a name finds no application");
    // A name that is a number means that application.
    if (spelling_number(entry.name, &number)) {
        fuzz::check(found == number, "a number finds another application");
        return;
    }
    bool is_named_so = false;
    for (const ctl_app_name &other : names)
        is_named_so =
            is_named_so || (other.app_id == found && text_is_same(other.name, entry.name));
    fuzz::check(is_named_so, "a name finds an application of another name");
}

void check_name(const ctl_app_name &entry) {
    const size_t length = strnlen(entry.name, sizeof(entry.name));
    fuzz::check(length > 0 && length < sizeof(entry.name), "a name that is empty or has no end");
    fuzz::check_clean(entry.name);
    fuzz::check(strchr(entry.name, '\n') == nullptr, "a name of several lines");
}

void check_outputs(const ctl_app_names &names, const ctl_app_name &entry) {
    fuzz::memory_stream_t printed;
    ctl_document document;
    document.add_app(names, entry.app_id);
    FILE *before = std::exchange(stdout, printed.get());
    const ctl_exit status = document.print();
    stdout = before;
    fuzz::check(status == CTL_DONE, "a name cannot be printed");
    fuzz::check_clean(printed.text());
    fuzz::check_json(printed.text());

    fuzz::memory_stream_t page;
    fputs("<!DOCTYPE html>\n<p title=\"", page.get());
    ctl_put_text(page.get(), entry.name);
    fputs("\">", page.get());
    ctl_put_text(page.get(), entry.name);
    fputs("</p>\n", page.get());
    fuzz::check_html(page.text());
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***arguments) {
    fuzz::enter_sandbox(*arguments);
    fuzz::silence_messages();
    names_file = std::make_unique<fuzz::input_file_t>("/tmp/fuzz_names");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    names_file->write(std::string(bytes, bytes + size));
    ctl_app_names names;
    fuzz::check(ctl_read_names(names_file->path(), &names) == CTL_DONE, "a file cannot be read");
    for (const ctl_app_name &entry : names) {
        check_name(entry);
        check_look_ups(names, entry);
    }
    if (!names.empty())
        check_outputs(names, names[bytes[size - 1] % names.size()]);
    return 0;
}
