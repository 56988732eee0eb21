#include "bench/usage_file.h"

#include "bench/plain_document.h"
#include "bench/ratios.h"
#include "core/heap.h"
#include "persist/export.h"
#include "persist/import.h"

#include <fstream>
#include <iterator>
#include <json-c/json.h>
#include <memory>

namespace {

/// An export makes no tree of the store, and so takes less than what does.
constexpr double export_budget = 0.7;
constexpr char daemon_path[] = "/tmp/daemon.json";
constexpr char alone_path[] = "/tmp/alone.json";

std::string text_of(const char *path) {
    std::ifstream file(path);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

/// @return the bytes of a document without its time
std::string without_time(std::string text) {
    const size_t start = text.find("\"timestamp\":");
    return text.erase(start, text.find(',', start) - start);
}

/// Both sides must do the same work, or the ratio says nothing.
bool writes_the_same(const plain_document_t &document) {
    return utm_app_export_statistics(daemon_path, 1) == 0 &&
           plain_document_write(document, 0, alone_path) == 0 &&
           without_time(text_of(daemon_path)) == without_time(text_of(alone_path));
}

void export_daemon(benchmark::State &state, const household_size_t &size) {
    household_build(size);
    if (!writes_the_same(plain_document_of_store()))
        state.SkipWithError("the two sides write different files");
    for (auto _ : state)
        if (utm_app_export_statistics(daemon_path, 1) != 0)
            state.SkipWithError("an export failed");
    household_clear();
}

void export_alone(benchmark::State &state, const household_size_t &size) {
    household_build(size);
    const plain_document_t document = plain_document_of_store();
    household_clear();
    for (auto _ : state)
        if (plain_document_write(document, 0, alone_path) != 0)
            state.SkipWithError("a document could not be written");
}

void import_daemon(benchmark::State &state, const household_size_t &size) {
    household_build(size);
    if (utm_app_export_statistics(daemon_path, 1) != 0)
        state.SkipWithError("an export failed");
    for (auto _ : state)
        if (utm_app_import_statistics(daemon_path) != 0)
            state.SkipWithError("an import failed");
    household_clear();
}

void import_alone(benchmark::State &state, const household_size_t &size) {
    household_build(size);
    if (utm_app_export_statistics(alone_path, 1) != 0)
        state.SkipWithError("an export failed");
    household_clear();
    for (auto _ : state) {
        json_object *document = json_object_from_file(alone_path);
        if (document == nullptr)
            state.SkipWithError("a document could not be read");
        json_object_put(document);
        // As the daemon does: the next document finds no room that is left over from this one.
        heap_give_back();
    }
}

} // namespace

void usage_file_register(const household_size_t &size) {
    ratio_register(
        {std::string("export/") + size.name, export_budget, ratio_clock_t::processor},
        [size](benchmark::State &state) { export_daemon(state, size); },
        [size](benchmark::State &state) { export_alone(state, size); });
    ratio_register(
        {std::string("import/") + size.name, size.budget, ratio_clock_t::processor},
        [size](benchmark::State &state) { import_daemon(state, size); },
        [size](benchmark::State &state) { import_alone(state, size); });
}
