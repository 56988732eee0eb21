#pragma once
/// The usage file: the accounting state as one JSON document. This is the one home of its keys, of
/// opening it, and of writing and reading each of its records. docs/usage-file.md describes it for
/// people.
///
/// | in            | key                  | value                                             |
/// |---------------|----------------------|---------------------------------------------------|
/// | root          | user_profile_list    | array of profiles                                 |
/// |               | timestamp            | seconds since the epoch, cut to 32 bits           |
/// |               | global_stat          | array of applications, router-wide                |
/// | profile       | user_profile_id      |                                                   |
/// |               | mon .. sun           | weekday limits; "mon" is day 0, which is Sunday   |
/// |               | daily_extend         | minutes                                           |
/// |               | daily_used, weekly_used, monthly_used | minutes                          |
/// |               | blocked              | 0 or 1                                            |
/// |               | app_stat_list        | array of applications                             |
/// |               | device_list          | array of "AA:BB:CC:DD:EE:FF"                      |
/// |               | app_policy           | the bound policy; left out without one            |
/// | application   | app_id               |                                                   |
/// |               | daily_used, weekly_used, monthly_used | minutes                          |
/// |               | next_day_idx         | 0..29                                             |
/// |               | prev_30_days         | thirty numbers, in slot order                     |
/// | policy        | app_policy_id        |                                                   |
/// |               | app_list             | array of rules                                    |
/// | rule          | app_id, action, daily_limit |                                            |
///
/// The records are plain figures: nothing here knows where they come from or go to.

#include "core/clock.h"
#include "core/json.h"
#include "core/mac.h"
#include "core/owners.h"
#include "format/day_ring.h"
#include "format/policy_rule.h"

#include <cstddef>
#include <cstdint>

/// The daemon's own file. The folder is the router's to provide.
inline constexpr char usage_file_path[] = "/tmp/ApplicationData/app_usage.json";

/// What a file is called, in the folder of the one that it is to replace, until it is whole; and
/// what it is called when the file to be replaced has that name itself.
inline constexpr char usage_file_new_name[] = ".utm_appd.new";
inline constexpr char usage_file_other_new_name[] = ".utm_appd.new2";

/// What a reader takes of a file. 64 profiles with 500 applications, 32 devices and 40 rules each
/// fit, beside the router's 500 applications.
inline constexpr size_t usage_file_size_limit = size_t{8} * 1024 * 1024; ///< bytes
inline constexpr json_limits_t usage_file_limits = {
    .values = 1'230'000, .containers = 68'000, .members = 250'000};

namespace usage_key {

inline constexpr char user_profile_list[] = "user_profile_list";
inline constexpr char timestamp[] = "timestamp";
inline constexpr char global_stat[] = "global_stat";
inline constexpr char user_profile_id[] = "user_profile_id";
/// By day number. Day 0 is Sunday and stands under "mon": the names are places in a list, and
/// files in the field are written so.
inline constexpr const char *weekdays[days_per_week] = {"mon", "tues", "wed", "thur",
                                                        "fri", "sat",  "sun"};
inline constexpr char daily_extend[] = "daily_extend";
inline constexpr char daily_used[] = "daily_used";
inline constexpr char weekly_used[] = "weekly_used";
inline constexpr char monthly_used[] = "monthly_used";
inline constexpr char blocked[] = "blocked";
inline constexpr char app_stat_list[] = "app_stat_list";
inline constexpr char device_list[] = "device_list";
inline constexpr char app_policy[] = "app_policy";
inline constexpr char app_policy_id[] = "app_policy_id";
inline constexpr char app_list[] = "app_list";
inline constexpr char app_id[] = "app_id";
inline constexpr char action[] = "action";
inline constexpr char daily_limit[] = "daily_limit";
inline constexpr char next_day_idx[] = "next_day_idx";
inline constexpr char prev_30_days[] = "prev_30_days";

} // namespace usage_key

/// Minutes of use. The three do not overlap: the use of the whole month is their sum.
struct usage_counters_t {
    int32_t daily;   ///< today
    int32_t weekly;  ///< earlier days of this week
    int32_t monthly; ///< earlier weeks of this month
};

/// One application's use.
struct usage_app_t {
    int32_t app_id;
    usage_counters_t used;
    bool has_ring;        ///< the element names the ring's next slot
    int32_t next_day_idx; ///< 0..29
    int32_t prev_30_days[day_ring_days];
};

struct usage_weekday_t {
    int32_t day; ///< 0 = Sunday
    int32_t limit;
};

/// A profile's own figures, without its lists.
struct usage_profile_t {
    int32_t user_profile_id;
    usage_weekday_t weekdays[days_per_week]; ///< in the order of their keys
    int32_t weekday_count;
    int32_t daily_extend;
    usage_counters_t used;
    int32_t blocked;
};

// ---- The whole file ------------------------------------------------------------------------

/// Reads a usage file and parses it. No more than the limit and a byte is read, whatever the file
/// says of its size.
/// @param size_limit  bytes
/// @return the document, which is null for the text `null` too; null with `errno` set: EFBIG when
///         there are more bytes, EOVERFLOW for more values than the limits above, EBADMSG for a
///         text that json-c cannot parse or that is nested deeper than 32
[[nodiscard]] json_ptr usage_file_read(int fd, size_t size_limit = usage_file_size_limit);

/// @return whether a text is within what `usage_file_read` takes
[[nodiscard]] bool usage_text_is_readable(const char *text, size_t size);

// ---- Writing -------------------------------------------------------------------------------

/// The text of a usage file while it is being written, in json-c's compact form. Once memory has
/// run out it takes nothing more.
struct usage_text_t {
    heap_ptr<char> bytes;
    size_t size;      ///< bytes written
    size_t room;      ///< bytes allocated
    bool is_at_start; ///< nothing stands in the object or list that was opened last
    bool has_failed;  ///< memory has run out: the text is of no use
};

/// Each of these writes one record, or where a list begins or ends, in this order:
///
///     begin
///     { profile app*  devices device* devices_end  [ policy rule* policy_end ]  profile_end }*
///     router app*
///     end
void usage_write_begin(usage_text_t *text);
void usage_write_profile(usage_text_t *text, const usage_profile_t &profile);
void usage_write_app(usage_text_t *text, const usage_app_t &app);
void usage_write_devices(usage_text_t *text);
void usage_write_device(usage_text_t *text, const mac_text_t &mac);
void usage_write_devices_end(usage_text_t *text);
void usage_write_policy(usage_text_t *text, int32_t app_policy_id);
void usage_write_rule(usage_text_t *text, const config_policy_rule_t &rule);
void usage_write_policy_end(usage_text_t *text);
void usage_write_profile_end(usage_text_t *text);
/// @param timestamp  the document's time, seconds since the epoch, cut to 32 bits
void usage_write_router(usage_text_t *text, int32_t timestamp);
void usage_write_end(usage_text_t *text);

/// Writes the text to a descriptor.
/// @return false when it could not be written whole
[[nodiscard]] bool usage_text_write(const usage_text_t &text, int fd);

/// Enters a weekday's limit under its own key and under every later one; a later entry then
/// replaces what it finds. So each day of a full list gets its own limit, and a list with days
/// missing fills the gaps with the limit of the day before.
/// @param day  other numbers than 0 to 6 enter nothing
void usage_add_weekday(usage_profile_t *profile, int32_t day, int32_t limit);

// ---- Reading -------------------------------------------------------------------------------

/// @param root  a parsed document, or null
/// @return what keeps a document from being a usage file, in words; null when nothing does
[[nodiscard]] const char *usage_objection_to(json_object *root);

/// @param timestamp  out: 0 when it is absent
/// @return whether the document says when it was written
bool usage_read_time(json_object *root, int32_t *timestamp);

/// The lists, borrowed from the element; null where a list is missing.
[[nodiscard]] json_object *usage_profiles_of(json_object *root);
[[nodiscard]] json_object *usage_router_apps_of(json_object *root);
[[nodiscard]] json_object *usage_apps_of(json_object *profile);
[[nodiscard]] json_object *usage_devices_of(json_object *profile);
[[nodiscard]] json_object *usage_rules_of(json_object *profile);

/// @return whether the element has the key of its applications, whatever type the value has
[[nodiscard]] bool usage_has_apps(json_object *profile);

/// The readers take any value. json-c converts each figure; a missing one is 0.
///
/// @return false for an element without an id, which is no profile
[[nodiscard]] bool usage_read_profile(json_object *element, usage_profile_t *profile);

/// The same, for the id alone.
[[nodiscard]] bool usage_read_profile_id(json_object *element, int32_t *profile_id);

/// An index outside the ring is reduced into it rather than refused: the element's counters are as
/// good as any, and only the order of its history is in doubt. A ring of another size than thirty
/// is read as zeros.
/// @return false for an element that lacks its id or a counter
[[nodiscard]] bool usage_read_app(json_object *element, usage_app_t *app);

/// @return false for an element without an application
[[nodiscard]] bool usage_read_rule(json_object *element, config_policy_rule_t *rule);
