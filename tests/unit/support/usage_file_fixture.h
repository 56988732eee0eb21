#pragma once
/// The base of the tests around the usage file: an active feature, a folder for files, and exports
/// and imports of text.

#include "tests/unit/support/usage_file_document.h"

#include <gtest/gtest.h>
#include <string>

class usage_file_fixture : public testing::Test {
protected:
    static constexpr char folder[] = "/tmp/usage";
    static constexpr char import_path[] = "/tmp/usage/import.json";
    static constexpr char export_path[] = "/tmp/usage/export.json";

    void SetUp() override;
    void TearDown() override;

    static void write_file(const std::string &path, const std::string &text);
    static std::string read_file(const std::string &path);

    /// Writes a text to `import_path` and imports it.
    /// @return the import's result
    static int32_t import_text(const std::string &text);

    /// Exports to `export_path`, without a line in the trace.
    /// @return the file's bytes
    static std::string export_text();

    /// Frees every record of the store, without a line in the trace.
    static void empty_store();

    /// Empties the log and the trace, which both grow slow in a test of thousands of steps.
    static void forget_log();

    /// Sets the time of the last export.
    static void set_last_export(int64_t seconds);

    /// Gives the store a profile and what a file says of it, policy, devices and ring included.
    static void make(const usage_file::profile_t &profile);
    /// Appends a record to the router's list.
    static void make_router_app(const usage_file::app_t &app);
    static void make(const usage_file::document_t &document);
};
