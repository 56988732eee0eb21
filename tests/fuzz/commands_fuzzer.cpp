/// Command sequences: what clients ask, what the statistics service says and what the clock does,
/// in any order. After each step everything that holds of the store is checked, and no command line
/// may hold a character that means something to a shell.
///
/// An input is a row of records of eight bytes: what happens, and seven bytes that its arguments
/// are chosen by. Ids and applications are few, so that steps meet.

#include "control/feature_switch.h"
#include "core/owners.h"
#include "format/usage_file.h"
#include "persist/export_schedule.h"
#include "store/dump.h"
#include "store/policies.h"
#include "store/profiles.h"
#include "tests/fuzz/outside.h"
#include "tests/fuzz/support.h"
#include "tests/lib/invariants.h"
#include "usage/collector.h"
#include "usage/top_apps.h"

#include <array>
#include <climits>
#include <cstring>
#include <random>
#include <unistd.h>

namespace {

constexpr size_t record_size = 8;
using record_t = std::array<uint8_t, record_size>;

// ---- Arguments -----------------------------------------------------------------------------

template <typename Value, size_t size>
Value pick(const Value (&pool)[size], uint8_t byte) {
    return pool[byte % size];
}

/// Four ids most of the time.
int32_t id_of(uint8_t byte) {
    static constexpr int32_t odd[] = {0, -1, 5, 6, INT32_MAX, INT32_MIN};
    return byte < 200 ? byte % 4 + 1 : pick(odd, byte);
}

/// Few applications most of the time, and enough others to make an index grow.
int32_t app_of(uint8_t byte) {
    static constexpr int32_t known[] = {0, 12, 13, 14, 305, -1, INT32_MAX, INT32_MIN};
    return byte < 160 ? pick(known, byte) : 1000 + byte % 48 * 65'536;
}

int32_t minutes_of(uint8_t byte) {
    static constexpr int32_t odd[] = {0,    1,    30,   60, 359,   360,    361,       1439,
                                      1440, 1441, 1500, -1, 65535, 65'536, INT32_MAX, INT32_MIN};
    return byte < 128 ? pick(odd, byte) : byte - 128;
}

std::array<uint8_t, mac_bytes> mac_of(uint8_t byte) {
    // Devices that differ in their first byte or in their last one.
    return {byte < 128 ? uint8_t{0} : byte, 0x1A, 0x2B, 0x3C, 0x4D, static_cast<uint8_t>(byte % 5)};
}

constexpr const char *paths[] = {
    usage_file_path,       "/tmp/fuzz_a.json",
    "/tmp/fuzz_b.json",    "",
    "/nowhere/usage.json", "/tmp",
    "/dev/null",           "/tmp/x;reboot $(y) `z`\n\x1b[2J",
};

constexpr uint8_t types[] = {
    UTM_APP_CONFIG_PING,
    UTM_APP_CONFIG_CREATE_PROFILE,
    UTM_APP_CONFIG_DELETE_PROFILE,
    UTM_APP_CONFIG_ADD_DEVICE,
    UTM_APP_CONFIG_DEL_DEVICE,
    UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE,
    UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE,
    UTM_APP_CONFIG_SET_DAILY_LIMIT,
    UTM_APP_CONFIG_GET_DAILY_LIMIT,
    UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT,
    UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT,
    UTM_APP_CONFIG_ADD_EXTEND,
    UTM_APP_CONFIG_GET_EXTEND,
    UTM_APP_CONFIG_RESET_EXTEND,
    UTM_APP_CONFIG_GET_PROFILE_USAGE,
    UTM_APP_CONFIG_GET_APP_USAGE,
    UTM_APP_CONFIG_GET_PREV_DAY_USAGE,
    UTM_APP_CONFIG_SET_ACTIVATE,
    UTM_APP_CONFIG_SET_DEBUG,
    UTM_APP_CONFIG_CREATE_POLICY,
    UTM_APP_CONFIG_ADD_APPS_TO_POLICY,
    UTM_APP_CONFIG_DELETE_POLICY,
    UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE,
    UTM_APP_CONFIG_LOAD_SIGNATURE,
    UTM_APP_CONFIG_GET_STATUS,
    UTM_APP_CONFIG_GET_EXPORT_INTERVAL,
    UTM_APP_CONFIG_SET_EXPORT_INTERVAL,
    UTM_APP_CONFIG_IMPORT_STATISTICS,
    UTM_APP_CONFIG_EXPORT_STATISTICS,
};

void put_rules(utm_app_config_cmd *request, const record_t &bytes) {
    utm_app_config_app_entry rules[UTM_APP_CONFIG_APP_LIST_MAX] = {};
    for (size_t i = 0; i < UTM_APP_CONFIG_APP_LIST_MAX; ++i) {
        const uint8_t choice = bytes[4 + i % 4];
        const auto limit = static_cast<uint16_t>(minutes_of(static_cast<uint8_t>(choice * 3 + i)));
        rules[i] = {static_cast<uint32_t>(app_of(static_cast<uint8_t>(choice + i / 4))),
                    static_cast<uint16_t>(choice % 4), limit};
    }
    utm_app_config_put_rules(request, rules, UTM_APP_CONFIG_APP_LIST_MAX);
}

utm_app_config_cmd request_of(const record_t &bytes) {
    static constexpr int32_t selectors[] = {0,    1,    6,    7,    29,   30,   31,
                                            1000, 1001, 1003, 1004, 2000, 2001, -1};
    // A number that nobody serves now and then.
    utm_app_config_cmd request = {.type = bytes[1] < 250 ? pick(types, bytes[1]) : bytes[2],
                                  .arg0 = id_of(bytes[2]),
                                  .arg1 = pick(selectors, bytes[3]),
                                  .arg2 = bytes[4] % 3,
                                  .arg3 = minutes_of(bytes[5]),
                                  .arg4 = minutes_of(bytes[6])};
    switch (request.type) {
    case UTM_APP_CONFIG_ADD_DEVICE:
    case UTM_APP_CONFIG_DEL_DEVICE:
        utm_app_config_put_mac(&request, mac_of(bytes[3]).data());
        break;
    case UTM_APP_CONFIG_ADD_APPS_TO_POLICY:
        request.arg1 = bytes[3] % 12;
        put_rules(&request, bytes);
        break;
    case UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE:
        request.arg1 = id_of(bytes[3]);
        break;
    case UTM_APP_CONFIG_SET_ACTIVATE:
    case UTM_APP_CONFIG_SET_DEBUG:
        // The log costs time: rarely.
        request.arg0 = bytes[2] % (request.type == UTM_APP_CONFIG_SET_DEBUG ? 16 : 3);
        break;
    case UTM_APP_CONFIG_SET_EXPORT_INTERVAL:
        request.arg0 = minutes_of(bytes[2]);
        break;
    case UTM_APP_CONFIG_LOAD_SIGNATURE:
    case UTM_APP_CONFIG_IMPORT_STATISTICS:
    case UTM_APP_CONFIG_EXPORT_STATISTICS:
        request = {.type = request.type};
        utm_app_config_put_path(&request, pick(paths, bytes[2]));
        break;
    default:
        break;
    }
    return request;
}

// ---- Steps ---------------------------------------------------------------------------------

/// @return a reply of the statistics service with three figures
std::string figures_of(const record_t &bytes) {
    static constexpr const char *kinds[] = {"APP", "INTERNET", "APP", "OTHER"};
    std::string text = "{\"data\":[";
    for (size_t i = 0; i < 3; ++i)
        text += std::string(i == 0 ? "" : ",") + "{\"type\":\"" +
                pick(kinds, static_cast<uint8_t>(bytes[1] >> (2 * i))) +
                "\",\"app_id\":" + std::to_string(app_of(bytes[2 + 2 * i])) +
                ",\"total_time_usage\":" + std::to_string(minutes_of(bytes[3 + 2 * i])) + "}";
    return text + "]}\n";
}

void tick(const record_t &bytes) {
    // To read a reply takes longer than most steps: not for everybody at every tick.
    outside::set_reply(figures_of(bytes), bytes[0] % 4);
    utm_app_update_app_status();
    utm_app_update_global_app_status();
    if (bytes[0] % 8 == 1)
        utm_app_export_check();
}

void pass_time(const record_t &bytes) {
    static constexpr int64_t units[] = {1, 60, 3600, 86'400, 604'800, 31'557'600};
    const int64_t count = static_cast<int8_t>(bytes[2]);
    outside::set_now(outside::now() + count * pick(units, bytes[1]));
}

/// Clocks that no router should have.
void jump(const record_t &bytes) {
    const int64_t far = int64_t{1} << (bytes[1] % 56);
    outside::set_now(bytes[2] % 2 == 0 ? far : -far);
}

void break_outside(const record_t &bytes) {
    static constexpr int statuses[] = {0, 256, -1};
    static constexpr long uptimes[] = {86'400, 0, -1, 5'000'000};
    outside::set_status(pick(statuses, bytes[1]));
    outside::fail_queries(bytes[2] % 3);
    outside::set_uptime(pick(uptimes, bytes[3]));
}

/// What no command reaches: a debugger, and functions for other parts of the router.
void use_functions(const record_t &bytes) {
    int32_t count = 0;
    int32_t policy_id = 0;
    const heap_ptr<config_app_minutes_t> ranking(utm_app_get_top_apps(&count));
    const heap_ptr<uint8_t> devices(utm_app_get_devices(id_of(bytes[2]), &count));
    const heap_ptr<config_policy_rule_t> rules(utm_app_get_apps_of_policy(id_of(bytes[2]), &count));
    static_cast<void>(!utm_app_get_policy_of_profile(id_of(bytes[2]), &policy_id));
    if (bytes[1] % 4 == 0)
        utm_app_reset_top_apps();
    if (bytes[1] % 16 == 1)
        utm_app_dump_store();
}

void update_rule(const record_t &bytes) {
    const config_policy_rule_t rule = {app_of(bytes[2]), minutes_of(bytes[3]) % 4,
                                       minutes_of(bytes[4])};
    static_cast<void>(!utm_app_update_app_in_policy(id_of(bytes[1]), &rule));
}

/// Files cost more than all other steps together, and a few tell as much as many.
bool is_one_file_too_many(const utm_app_config_cmd &request, int *files) {
    constexpr int most = 2;
    return (request.type == UTM_APP_CONFIG_IMPORT_STATISTICS ||
            request.type == UTM_APP_CONFIG_EXPORT_STATISTICS) &&
           ++*files > most;
}

/// @param files  imports and exports so far
void step(const record_t &bytes, int *files) {
    const utm_app_config_cmd request = request_of(bytes);
    switch (bytes[0] / 8) {
    case 22:
    case 23:
    case 24:
    case 25:
        return tick(bytes);
    case 26:
        return pass_time(bytes);
    case 27:
        return bytes[0] % 8 == 0 ? jump(bytes) : pass_time(bytes);
    case 28:
        return break_outside(bytes);
    case 29:
        return use_functions(bytes);
    case 30:
        return update_rule(bytes);
    case 31:
        if (bytes[0] % 8 == 0)
            utm_app_flush_profiles();
        return;
    default:
        if (!is_one_file_too_many(request, files))
            outside::ask(request);
    }
}

void remove_files() {
    for (const char *path : {paths[0], paths[1], paths[2], paths[7]})
        unlink(path);
}

void check_everything(size_t number, const record_t &bytes) {
    const std::string broken = check_store_invariants();
    if (!broken.empty())
        fuzz::fail("after record " + std::to_string(number) + ", which begins with " +
                   std::to_string(bytes[0]) + " " + std::to_string(bytes[1]) + ": " + broken);
}

// ---- Mutations -----------------------------------------------------------------------------

/// An input as records.
class records_t {
public:
    records_t(uint8_t *bytes, size_t size, size_t most)
        : bytes_(bytes), count_(size / record_size), most_(most / record_size) {}

    size_t size() const { return count_ * record_size; }
    size_t count() const { return count_; }
    bool has_room() const { return count_ < most_; }
    uint8_t *at(size_t index) { return bytes_ + index * record_size; }

    void insert(size_t index, const record_t &record) {
        memmove(at(index + 1), at(index), (count_ - index) * record_size);
        memcpy(at(index), record.data(), record_size);
        ++count_;
    }
    void erase(size_t index) {
        memmove(at(index), at(index + 1), (count_ - index - 1) * record_size);
        --count_;
    }

private:
    uint8_t *bytes_;
    size_t count_;
    size_t most_;
};

record_t random_record(std::minstd_rand *random) {
    record_t record;
    for (uint8_t &byte : record)
        byte = static_cast<uint8_t>((*random)() >> 8);
    return record;
}

record_t copy_of(records_t *records, size_t index) {
    record_t record;
    memcpy(record.data(), records->at(index), record_size);
    return record;
}

/// Changes whole steps or one argument.
void mutate(records_t *records, std::minstd_rand *random) {
    const auto below = [random](size_t bound) { return (*random)() % bound; };
    const size_t count = records->count();
    const size_t choice = count == 0 ? 0 : below(6);
    if (choice == 0 && records->has_room())
        records->insert(below(count + 1), random_record(random));
    else if (choice == 1 && records->has_room())
        records->insert(below(count + 1), copy_of(records, below(count)));
    else if (choice == 2 && count > 1)
        records->erase(below(count));
    else if (count > 0)
        records->at(below(count))[below(record_size)] = static_cast<uint8_t>((*random)() >> 8);
}

} // namespace

extern "C" size_t LLVMFuzzerMutate(uint8_t *bytes, size_t size, size_t most);

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *bytes, size_t size, size_t most, unsigned seed) {
    std::minstd_rand random(seed);
    if (random() % 8 == 0)
        return LLVMFuzzerMutate(bytes, size, most);
    records_t records(bytes, size, most);
    const size_t steps = 1 + random() % 4;
    for (size_t i = 0; i < steps; ++i)
        mutate(&records, &random);
    return records.size();
}

extern "C" int LLVMFuzzerInitialize(int *, char ***arguments) {
    fuzz::enter_sandbox(*arguments);
    outside::prepare();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    int files = 0;
    for (size_t number = 0; (number + 1) * record_size <= size; ++number) {
        record_t record;
        memcpy(record.data(), bytes + number * record_size, record_size);
        step(record, &files);
        check_everything(number, record);
    }
    // Now and not before the next input, which would have to answer for what this one leaks.
    outside::reset();
    remove_files();
    return 0;
}
