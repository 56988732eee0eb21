#include "tests/model/rules.h"

namespace model {

void restart(state_t &state) {
    flush_profiles(state);
    state.router.clear();
    log(state, "Reset top apps success");
    // What is left are the machine's things: its clock, its uptime, its files.
    state.policies.clear();
    state.router_collected = state.last_export = state.now;
    state.active = false;
    state.debug = false;
    state.export_interval = 30;
}

void change(state_t &state, const change_t &change) {
    if (change.deed == deed_t::write_file)
        state.files[change.path] =
            std::make_shared<file_t>(file_t{change.document, text_of(change.document)});
    if (change.deed == deed_t::remove_file)
        state.files.erase(change.path);
    if (change.deed == deed_t::remove_folder)
        state.files.erase(own_path);
    if (change.deed == deed_t::make_folder || change.deed == deed_t::remove_folder)
        state.has_folder = change.deed == deed_t::make_folder;
}

const std::vector<std::string> &file_paths() {
    // The last one fills the 128 bytes of a request.
    static const std::vector<std::string> paths = {
        own_path, other_folder + "/usage.json",
        other_folder + "/" + std::string(128 - other_folder.size() - 1, 'u')};
    return paths;
}

const std::vector<std::string> &bad_paths() {
    static const std::vector<std::string> paths = {"", other_folder,
                                                   other_folder + "/missing/usage.json"};
    return paths;
}

} // namespace model
