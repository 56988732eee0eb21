#include "client/arguments.h"

#include "client/household_file.h"
#include "client/message.h"
#include "client/suggestion.h"
#include "client/text.h"
#include "client/verbs.h"
#include "core/mac.h"
#include "format/spelling.h"

#include <bit>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <unistd.h>

namespace {

/// What a shell takes as it stands.
constexpr char harmless_characters[] =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._-+,=@%:";

/// "lcsh load " and the path must fit into the daemon's 127 characters of command line.
constexpr size_t signature_path_max = 127 - (sizeof("lcsh load ") - 1);

/// Complains and fails, so that a reader ends with it.
__attribute__((format(printf, 1, 2))) bool refuse(const char *format, ...);

bool refuse(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    ctl_say_list(format, arguments);
    va_end(arguments);
    return false;
}

struct rule_word {
    const char *word;
    uint16_t action;
};

constexpr rule_word rule_words[] = {
    {"block", POLICY_ACTION_BLOCK},  {"blocked", POLICY_ACTION_BLOCK},
    {"allow", POLICY_ACTION_REMOVE}, {"remove", POLICY_ACTION_REMOVE},
    {"free", POLICY_ACTION_REMOVE},
};

bool read_rule_action(const char *text, utm_app_config_app_entry *rule) {
    rule->limit = 0;
    for (const rule_word &known : rule_words)
        if (strcasecmp(text, known.word) == 0) {
            rule->action = known.action;
            return true;
        }
    int32_t minutes = 0;
    if (!spelling_minutes(text, &minutes) || minutes > UINT16_MAX)
        return false;
    rule->action = POLICY_ACTION_LIMIT;
    rule->limit = static_cast<uint16_t>(minutes);
    return true;
}

bool unknown_app(const ctl_app_names &names, const char *app) {
    plain_vector<const char *> known;
    for (const ctl_app_name &entry : names)
        if (!known.add(entry.name))
            break;
    return refuse(
        "\"%s\" is no application\n%s", app,
        ctl_suggest(app, &known,
                    "Give its number, or name it in the household or in a file for --names")
            .text);
}

/// Takes the next word off a synopsis.
/// @return the word; empty at the end
std::string_view next_word(const char **synopsis) {
    const char *word = *synopsis + strspn(*synopsis, " ");
    const size_t length = strcspn(word, " ");
    *synopsis = word + length;
    return {word, length};
}

/// @return the word without the brackets of an operand that may be left out, and the dots of one
///         that may come again
std::string_view bare(std::string_view word) {
    if (word.ends_with("..."))
        word.remove_suffix(3);
    if (word.starts_with('[')) {
        word.remove_prefix(1);
        word.remove_suffix(1);
    }
    return word;
}

ctl_exit status_of(bool is_read) {
    return is_read ? CTL_DONE : CTL_USAGE;
}

/// Reads a limit's or a bonus's time, within its bounds.
ctl_exit read_minutes(const ctl_verb &verb, const char *text, int32_t *minutes) {
    // What nobody reaches is none.
    if (verb.minutes_most == household_no_limit && strcasecmp(text, "none") == 0) {
        *minutes = household_no_limit;
        return CTL_DONE;
    }
    if (!ctl_read_minutes(text, minutes))
        return CTL_USAGE;
    if (*minutes >= 1 && *minutes <= verb.minutes_most)
        return CTL_DONE;
    if (verb.minutes_most == INT32_MAX)
        return ctl_fail(CTL_REFUSED, "\"%s\" is less than 1m\nFor example: utm_appctl %s", text,
                        verb.example);
    return ctl_fail(CTL_REFUSED, "\"%s\" is not between 1m and %s\nFor example: utm_appctl %s",
                    text, ctl_time_of(verb.minutes_most).text, verb.example);
}

ctl_exit read_policy(const char *text, int32_t *number) {
    if (!ctl_read_number(text, "a policy's number", number))
        return CTL_USAGE;
    if (*number >= 1)
        return CTL_DONE;
    return ctl_fail(CTL_REFUSED, "\"%s\" is not a policy's number\nGive a whole number, 1 or more",
                    text);
}

ctl_exit read_days(const char *text, int32_t *day) {
    weekday_set_t days = 0;
    if (!ctl_read_days(text, &days))
        return CTL_USAGE;
    *day = std::countr_zero(days);
    return CTL_DONE;
}

ctl_exit read_path(const ctl_verb &verb, const char *text, utm_app_config_cmd *request) {
    ctl_path path = {};
    const bool is_signature = verb.type == UTM_APP_CONFIG_LOAD_SIGNATURE;
    if (!(is_signature ? ctl_read_signature_path(text, &path) : ctl_read_path(text, &path)))
        return CTL_USAGE;
    utm_app_config_put_path(request, path.text);
    return CTL_DONE;
}

/// @param place  of the operand: 0 or more
ctl_exit read_operand(const ctl_verb &verb, std::string_view word, size_t place, const char *text,
                      const household_t &household, utm_app_config_cmd *request) {
    int32_t *number = place == 0 ? &request->arg0 : &request->arg1;
    if (word == "ID" || word == "[ID]")
        return status_of(ctl_read_person(household, text, number));
    if (word == "POLICY")
        return read_policy(text, number);
    if (word == "on|off")
        return status_of(ctl_read_switch(text, number));
    if (word == "DAY")
        return read_days(text, number);
    if (word == "MINUTES")
        return read_minutes(verb, text, &(request->*verb.minutes));
    return word == "PATH" ? read_path(verb, text, request) : CTL_DONE;
}

} // namespace

ctl_bounds ctl_bounds_of(const char *synopsis) {
    ctl_bounds bounds = {};
    for (auto word = next_word(&synopsis); !word.empty(); word = next_word(&synopsis)) {
        bounds.least += word.front() != '[';
        bounds.most = word.ends_with("...") ? SIZE_MAX : bounds.most + 1;
    }
    return bounds;
}

bool ctl_has_operand(const ctl_verb &verb, const char *word) {
    const char *synopsis = verb.synopsis;
    std::string_view next = next_word(&synopsis);
    while (!next.empty() && bare(next) != word)
        next = next_word(&synopsis);
    return !next.empty();
}

std::string_view ctl_operand_word(const ctl_verb &verb, size_t place) {
    const char *synopsis = verb.synopsis;
    std::string_view word = next_word(&synopsis);
    for (; place > 0 && !word.ends_with("..."); --place)
        word = next_word(&synopsis);
    if (word.ends_with("..."))
        word.remove_suffix(3);
    return word.empty() ? word : bare(word);
}

ctl_exit ctl_read_operands(const ctl_verb &verb, std::span<const char *const> operands,
                           const household_t &household, utm_app_config_cmd *request) {
    const char *synopsis = verb.synopsis;
    ctl_exit status = CTL_DONE;
    for (size_t place = 0; place < operands.size() && status == CTL_DONE; ++place)
        status =
            read_operand(verb, next_word(&synopsis), place, operands[place], household, request);
    return status;
}

bool ctl_read_number(const char *text, const char *what, int32_t *number) {
    return spelling_number(text, number) ||
           refuse("\"%s\" is not %s\nGive a whole number, such as 3", text, what);
}

bool ctl_read_minutes(const char *text, int32_t *minutes) {
    return spelling_minutes(text, minutes) ||
           refuse("\"%s\" is not a time\nGive minutes, such as 90, 90m, 1h30m, 1:30 or 1.5h", text);
}

bool ctl_read_switch(const char *text, int32_t *value) {
    bool on = false;
    if (!spelling_switch(text, &on))
        return refuse("\"%s\" is neither on nor off\nGive on or off; yes and no will do, too",
                      text);
    *value = on ? 1 : 0;
    return true;
}

bool ctl_read_days(const char *text, weekday_set_t *days) {
    static constexpr const char *known[] = {"sunday",   "monday", "tuesday",  "wednesday",
                                            "thursday", "friday", "saturday", "weekend",
                                            "weekdays", "all",    nullptr};
    return spelling_days(text, days) ||
           refuse("\"%s\" is not a weekday\n%s", text,
                  ctl_suggest(text, known,
                              "Give names, such as mon or sat,sun, or 0 (Sunday) to 6, weekdays, "
                              "weekend or all")
                      .text);
}

bool ctl_read_mac(const char *text, uint8_t *mac) {
    return mac_parse(text, mac) ||
           refuse("\"%s\" is not a MAC address\nGive six bytes, such as 02:00:00:00:00:1a", text);
}

bool ctl_read_device_mac(const char *text, uint8_t *mac) {
    static constexpr uint8_t nobody[mac_bytes] = {};
    if (!ctl_read_mac(text, mac))
        return false;
    if (memcmp(mac, nobody, mac_bytes) == 0)
        return refuse("%s is the address of no device\nGive the device's own, which its network "
                      "settings show",
                      text);
    return (mac[0] & 1) == 0 ||
           refuse("%s is the address of many devices at once\nGive the device's own, which its "
                  "network settings show",
                  text);
}

bool ctl_read_rule(const ctl_app_names &names, const char *text, utm_app_config_app_entry *rule) {
    // The last one: a name may have such a sign too.
    const char *equals = strrchr(text, '=');
    char app[ctl_name_size] = {};
    int32_t app_id = 0;
    const size_t length = equals == nullptr ? 0 : static_cast<size_t>(equals - text);
    if (length == 0 || length >= sizeof(app) || !read_rule_action(equals + 1, rule))
        return refuse("\"%s\" is not a rule\n"
                      "Give APP=MINUTES (at most 65535), APP=block or APP=allow",
                      text);
    memcpy(app, text, length);
    if (!ctl_find_app(names, app, &app_id))
        return unknown_app(names, app);
    rule->app_id = static_cast<uint32_t>(app_id);
    return true;
}

bool ctl_read_path(const char *text, ctl_path *path) {
    char directory[PATH_MAX] = "";
    const char *slash = "";
    if (text[0] == '\0')
        return refuse("the path is empty\nName a file");
    // The daemon runs in the root folder and would look there.
    if (text[0] != '/') {
        if (getcwd(directory, sizeof(directory)) == nullptr)
            return refuse("cannot find the current directory (%s)\nGive an absolute path",
                          strerror(errno));
        slash = strcmp(directory, "/") == 0 ? "" : "/";
    }
    const int length = snprintf(path->text, sizeof(path->text), "%s%s%s", directory, slash, text);
    return (length >= 0 && static_cast<size_t>(length) < sizeof(path->text)) ||
           refuse("%s%s%s is too long\nA path may have at most %zu characters", directory, slash,
                  text, sizeof(path->text) - 1);
}

bool ctl_read_signature_path(const char *text, ctl_path *path) {
    if (!ctl_read_path(text, path))
        return false;
    for (const char *c = path->text; *c != '\0'; ++c)
        if (strchr(harmless_characters, *c) == nullptr)
            return refuse("a shell would read the path %s\nIt may have only letters, digits and "
                          "/._-+,=@%%: in it; rename the file",
                          path->text);
    return strlen(path->text) <= signature_path_max ||
           refuse("%s is too long\nA signature's path may have at most %zu characters", path->text,
                  signature_path_max);
}
