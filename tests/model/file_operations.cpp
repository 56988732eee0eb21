#include "tests/model/operations.h"

#include "tests/lib/exchange.h"

#include <climits>

namespace model {

int32_t generator_t::interval() {
    // Some, in seconds, come out of 32 bits as another number.
    return one_in(4) ? one_of({0, -1, INT_MIN, INT_MAX, 1 << 30, 35'791'395, 71'582'789, 1440})
                     : 1 + below(60);
}

std::string generator_t::path() {
    const std::vector<std::string> &paths = one_in(5) ? bad_paths() : file_paths();
    return paths[static_cast<size_t>(below(static_cast<int32_t>(paths.size())))];
}

operation_t generator_t::file_command(uint8_t type, const std::string &path) {
    operation_t operation;
    operation.kind = kind_t::command;
    operation.text = "command " + std::to_string(type) + " " + path;
    operation.request = sim_bytes(sim_path_command(type, path));
    return operation;
}

operation_t generator_t::clock(time_t step) {
    operation_t operation;
    operation.kind = kind_t::clock;
    operation.text = "clock";
    operation.step = step;
    return operation;
}

void generator_t::damage(filed_app_t *app) {
    if (one_in(4))
        app->ring_length = one_of<size_t>({0, 29, 31});
    else
        app->lacks = one_of({"app_id", "daily_used", "weekly_used", "monthly_used", "next_day_idx",
                             "next_day_idx", "prev_30_days"});
}

void generator_t::damage(document_t *document) {
    if (one_in(10))
        document->is_torn = true;
    if (one_in(4))
        document->lacks = one_of({"user_profile_list", "timestamp", "timestamp", "global_stat"});
    for (filed_profile_t &profile : document->profiles) {
        if (one_in(3))
            profile.lacks = one_of({"user_profile_id", "daily_used", "weekly_used", "monthly_used",
                                    "app_stat_list", "app_stat_list", "device_list", "tues"});
        for (filed_app_t &app : profile.apps)
            if (one_in(4))
                damage(&app);
    }
    for (filed_app_t &app : document->router)
        if (one_in(4))
            damage(&app);
}

/// Takes the daemon's own file or its folder away, puts the folder there, or damages some file.
operation_t generator_t::change(const state_t &state) {
    operation_t operation;
    operation.kind = kind_t::change;
    change_t &change = operation.change;
    change.path = own_path;
    if (!state.has_folder) {
        change.deed = deed_t::make_folder;
        operation.text = "make folder";
    } else if (one_in(6)) {
        change.deed = deed_t::remove_folder;
        operation.text = "remove folder";
    } else if (one_in(3) || state.files.empty()) {
        change.deed = deed_t::remove_file;
        operation.text = "remove file";
    } else {
        auto file = state.files.begin();
        std::advance(file, below(static_cast<int32_t>(state.files.size())));
        change.deed = deed_t::write_file;
        change.path = file->first;
        change.document = file->second->document;
        damage(&change.document);
        operation.text = "damage";
        if (!one_in(4)) {
            plan_.push_back(clock(below(2 * 24 * 3600)));
            plan_.push_back(file_command(50, change.path));
        }
    }
    operation.text += " " + change.path;
    return operation;
}

operation_t generator_t::request_to(uint8_t type, int32_t profile_id) {
    operation_t operation = command(type);
    operation.request.replace(8, sizeof(profile_id), reinterpret_cast<const char *>(&profile_id),
                              sizeof(profile_id));
    operation.text += ", rather for profile " + std::to_string(profile_id);
    return operation;
}

/// A profile goes and comes back with a device, a limit and a policy.
void generator_t::plan_profile(int32_t id) {
    for (const int type : {2, 1, 3, 26, 28, 42, 43, 45})
        plan_.push_back(
            request_to(static_cast<uint8_t>(type), type < 40 || type == 45 ? id : 1 + below(5)));
}

/// The daemon goes and comes back; a front end then switches it on and gives it its file.
void generator_t::plan_restart() {
    if (!one_in(4))
        plan_.push_back(file_command(51, own_path));
    operation_t operation;
    operation.kind = kind_t::restart;
    operation.text = "restart";
    plan_.push_back(operation);
    if (one_in(2))
        plan_.push_back(clock(below(3 * 24 * 3600)));
    if (one_in(4)) // with debug logging still off
        plan_.push_back(file_command(50, path()));
    operation_t debug = command(41);
    debug.text = "command 41 1";
    debug.request = sim_bytes(world::request(41, {1}));
    operation_t activate = command(39);
    activate.text = "command 39 1";
    activate.request = sim_bytes(world::request(39, {1}));
    plan_.push_back(one_in(3) ? activate : debug);
    plan_.push_back(plan_.back().text == debug.text ? activate : debug);
    for (int32_t id = 1; id <= 4; ++id)
        if (one_in(2))
            plan_profile(id);
    if (!one_in(5))
        plan_.push_back(file_command(50, own_path));
}

/// A file is written, time passes or goes back, and the file is read again, perhaps twice.
void generator_t::plan_round_trip() {
    constexpr int32_t day = 24 * 3600;
    const std::string file = one_of({file_paths()[0], file_paths()[1], file_paths()[2]});
    plan_.push_back(file_command(51, file));
    const int32_t id = 1 + below(4);
    const bool is_rebuilt = one_in(2);
    if (is_rebuilt)
        plan_profile(id);
    for (int32_t i = 1 + below(2); i > 0; --i) {
        const time_t step = one_of<time_t>({0, below(day), below(day), -below(day), day, 2 * day,
                                            below(8) * day, below(32) * day, 29 * day, 30 * day,
                                            31 * day, below(400) * day, -below(400) * day});
        plan_.push_back(clock(step));
        plan_.push_back(file_command(50, file));
    }
    if (is_rebuilt)
        plan_.push_back(request_to(3, id));
}

} // namespace model
