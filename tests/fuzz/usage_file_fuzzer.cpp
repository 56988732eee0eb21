/// Usage files: whatever a file holds, its import leaves a store that is whole, or the store as it
/// was; and what is exported afterwards is imported without a change.
///
/// An input is the text of a file.

#include "control/feature_switch.h"
#include "core/json.h"
#include "persist/export.h"
#include "persist/import.h"
#include "tests/fuzz/json_mutator.h"
#include "tests/fuzz/outside.h"
#include "tests/fuzz/support.h"
#include "tests/lib/invariants.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace {

constexpr char export_path[] = "/tmp/fuzz_export.json";
std::unique_ptr<fuzz::input_file_t> input_file;

bool import_text(const std::string &text) {
    input_file->write(text);
    return utm_app_import_statistics(input_file->path()) == 0;
}

std::string export_text() {
    fuzz::check(utm_app_export_statistics(export_path, 0) == 0, "an export failed");
    return fuzz::read_file(export_path);
}

void check_store() {
    const std::string broken = check_store_invariants();
    if (!broken.empty())
        fuzz::fail(broken);
}

// ---- Stores --------------------------------------------------------------------------------

void empty_store() {
    outside::reset();
    const mutex_guard lock(utm_app_config_mutex);
    activate = 1;
}

void ask(const utm_app_config_cmd &request) {
    const auto replies = outside::ask(request);
    fuzz::check(replies.size() == 1 && replies[0].status == UTM_APP_CONFIG_STATUS_OK,
                "a household could not be made");
}

/// Two people of few minutes, whose rules name what files mostly name.
void household() {
    empty_store();
    for (const int32_t id : {1, 7}) {
        ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = id});
        utm_app_config_cmd device = {.type = UTM_APP_CONFIG_ADD_DEVICE, .arg0 = id};
        const uint8_t mac[mac_bytes] = {2, 0, 0, 0, 0, static_cast<uint8_t>(id)};
        utm_app_config_put_mac(&device, mac);
        ask(device);
        ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT, .arg0 = id, .arg3 = 60});
        ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, .arg0 = id, .arg2 = 1});
        ask({.type = UTM_APP_CONFIG_CREATE_POLICY, .arg0 = id});
        utm_app_config_cmd rules = {
            .type = UTM_APP_CONFIG_ADD_APPS_TO_POLICY, .arg0 = id, .arg1 = 3};
        const utm_app_config_app_entry entries[] = {{305, POLICY_ACTION_LIMIT, 30},
                                                    {306, POLICY_ACTION_BLOCK, 0},
                                                    {0, POLICY_ACTION_LIMIT, 1}};
        utm_app_config_put_rules(&rules, entries, 3);
        ask(rules);
        ask({.type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, .arg0 = id, .arg1 = id});
    }
}

// ---- Files ---------------------------------------------------------------------------------

std::vector<std::string> router_apps_of(const std::string &text) {
    std::vector<std::string> apps;
    const json_ptr document(json_tokener_parse(text.c_str()));
    json_object *list = json_array_member(document.get(), "global_stat");
    fuzz::check(list != nullptr, "an export is no usage file");
    for (size_t i = 0; i < json_object_array_length(list); ++i)
        apps.emplace_back(json_object_to_json_string(json_object_array_get_idx(list, i)));
    return apps;
}

/// @return all of a file but the router's applications
std::string all_else_of(const std::string &text) {
    return text.substr(0, text.find("\"global_stat\""));
}

std::string imported_again(const std::string &text) {
    fuzz::check(import_text(text), "an exported file could not be imported");
    check_store();
    return export_text();
}

/// The router's applications come into the store in the file's order, each to the front: every
/// import turns them around. All else stays as it is.
void check_round_trips(const std::string &first, const std::string &second,
                       const std::string &third) {
    fuzz::check(third == first, "an export changes on its way through the store");
    fuzz::check(all_else_of(first) == all_else_of(second), "a profile changes on its way");
    std::vector<std::string> apps = router_apps_of(second);
    std::reverse(apps.begin(), apps.end());
    fuzz::check(apps == router_apps_of(first), "the router's applications change on their way");
}

void check_import(const std::string &text, void (*prepare)(), void (*prepare_again)()) {
    prepare();
    const std::string before = export_text();
    const bool imported = import_text(text);
    check_store();
    const std::string first = export_text();
    if (!imported) {
        fuzz::check(first == before, "a refused file has changed the store");
        return;
    }
    prepare_again();
    const std::string second = imported_again(first);
    prepare_again();
    const std::string third = imported_again(second);
    check_round_trips(first, second, third);
}

} // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *bytes, size_t size, size_t most, unsigned seed) {
    return fuzz::mutate_json(bytes, size, most, seed);
}

extern "C" int LLVMFuzzerInitialize(int *, char ***arguments) {
    fuzz::enter_sandbox(*arguments);
    outside::prepare();
    input_file = std::make_unique<fuzz::input_file_t>("/tmp/fuzz_import.json");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    const std::string text(bytes, bytes + size);
    check_import(text, empty_store, empty_store);
    // What is configured is in no import, so here the store stays.
    check_import(text, household, [] {});
    outside::reset();
    return 0;
}
