#pragma once
/// Where a long text goes: to standard output, into a document, or to a file that its readers only
/// ever see whole.

#include "client/message.h"
#include "core/owners.h"

#include <climits>
#include <cstdio>

class ctl_output_file {
public:
    ctl_output_file() = default;
    /// Removes what was not committed.
    ~ctl_output_file();
    ctl_output_file(const ctl_output_file &) = delete;
    ctl_output_file &operator=(const ctl_output_file &) = delete;

    /// Makes a new file beside the old one.
    /// @param path  null: standard output
    /// @param key   where there is no path: of the text in a document; null for no document
    /// @return CTL_DONE; CTL_USAGE, after a message, for a path where no file can be put
    [[nodiscard]] ctl_exit open(const char *path, const char *key);

    FILE *stream() const { return file_ != nullptr ? file_.get() : stdout; }

    /// Puts the new file in the old one's place, or prints the document.
    /// @return CTL_DONE; CTL_BROKEN, after a message, when it could not be written
    [[nodiscard]] ctl_exit commit();

private:
    ctl_exit open_text();
    ctl_exit open_file(const char *path);
    ctl_exit print_text();

    file_ptr file_;
    const char *path_ = nullptr;
    const char *key_ = nullptr;
    char unfinished_[PATH_MAX] = "";
    char *text_ = nullptr;
    size_t size_ = 0;
};
