#include "client/arguments.h"

#include "client/message.h"
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

bool read_rule_action(const char *text, utm_app_config_app_entry *rule) {
    int32_t minutes = 0;
    rule->limit = 0;
    if (strcmp(text, "block") == 0) {
        rule->action = POLICY_ACTION_BLOCK;
    } else if (strcmp(text, "remove") == 0) {
        rule->action = POLICY_ACTION_REMOVE;
    } else if (spelling_minutes(text, &minutes) && minutes <= UINT16_MAX) {
        rule->action = POLICY_ACTION_LIMIT;
        rule->limit = static_cast<uint16_t>(minutes);
    } else {
        return false;
    }
    return true;
}

/// Takes the next word off a synopsis.
/// @return the word; empty at the end
std::string_view next_word(const char **synopsis) {
    const char *word = *synopsis + strspn(*synopsis, " ");
    const size_t length = strcspn(word, " ");
    *synopsis = word + length;
    return {word, length};
}

/// @param place  of the operand: 0 or more
bool read_operand(const ctl_verb &verb, std::string_view word, size_t place, const char *text,
                  utm_app_config_cmd *request) {
    int32_t *number = place == 0 ? &request->arg0 : &request->arg1;
    if (word == "ID")
        return ctl_read_number(text, "a profile's number", number);
    if (word == "POLICY")
        return ctl_read_number(text, "a policy's number", number);
    if (word == "on|off")
        return ctl_read_switch(text, number);
    if (word == "DAY")
        return ctl_read_weekday(text, number);
    if (word == "MINUTES")
        return ctl_read_minutes(text, &(request->*verb.minutes));
    if (word != "PATH")
        return true;
    ctl_path path = {};
    const bool is_signature = verb.type == UTM_APP_CONFIG_LOAD_SIGNATURE;
    if (!(is_signature ? ctl_read_signature_path(text, &path) : ctl_read_path(text, &path)))
        return false;
    utm_app_config_put_path(request, path.text);
    return true;
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

bool ctl_read_operands(const ctl_verb &verb, std::span<const char *const> operands,
                       utm_app_config_cmd *request) {
    const char *synopsis = verb.synopsis;
    for (size_t place = 0; place < operands.size(); ++place)
        if (!read_operand(verb, next_word(&synopsis), place, operands[place], request))
            return false;
    return true;
}

bool ctl_read_number(const char *text, const char *what, int32_t *number) {
    return spelling_number(text, number) ||
           refuse("\"%s\" is not %s: give a whole number, such as 3", text, what);
}

bool ctl_read_minutes(const char *text, int32_t *minutes) {
    return spelling_minutes(text, minutes) ||
           refuse("\"%s\" is not a time: give minutes, such as 90, 90m or 1h30m", text);
}

bool ctl_read_switch(const char *text, int32_t *value) {
    bool on = false;
    if (!spelling_switch(text, &on))
        return refuse("\"%s\" is neither on nor off", text);
    *value = on;
    return true;
}

bool ctl_read_weekday(const char *text, int32_t *day) {
    weekday_set_t days = 0;
    if (!spelling_days(text, &days) || !std::has_single_bit(days))
        return refuse(
            "\"%s\" is not a weekday: give a name, such as monday or mon, or 0 (Sunday) to 6",
            text);
    *day = std::countr_zero(days);
    return true;
}

bool ctl_read_mac(const char *text, uint8_t *mac) {
    return mac_parse(text, mac) ||
           refuse("\"%s\" is not a MAC address: give six bytes, such as 02:00:00:00:00:1a", text);
}

bool ctl_read_rule(const ctl_app_names &names, const char *text, utm_app_config_app_entry *rule) {
    // The last one: a name may have such a sign too.
    const char *equals = strrchr(text, '=');
    char app[ctl_name_size] = {};
    int32_t app_id = 0;
    const size_t length = equals == nullptr ? 0 : static_cast<size_t>(equals - text);
    if (length == 0 || length >= sizeof(app) || !read_rule_action(equals + 1, rule))
        return refuse(
            "\"%s\" is not a rule: give APP=MINUTES (at most 65535), APP=block or APP=remove",
            text);
    memcpy(app, text, length);
    if (!ctl_find_app(names, app, &app_id))
        return refuse("\"%s\": unknown application; give its number, or name it in a file "
                      "for --names",
                      app);
    rule->app_id = static_cast<uint32_t>(app_id);
    return true;
}

bool ctl_read_path(const char *text, ctl_path *path) {
    char directory[PATH_MAX] = "";
    const char *slash = "";
    if (text[0] == '\0')
        return refuse("the path is empty: name a file");
    // The daemon runs in the root folder and would look there.
    if (text[0] != '/') {
        if (getcwd(directory, sizeof(directory)) == nullptr)
            return refuse("cannot find the current directory (%s): give an absolute path",
                          strerror(errno));
        slash = strcmp(directory, "/") == 0 ? "" : "/";
    }
    const int length = snprintf(path->text, sizeof(path->text), "%s%s%s", directory, slash, text);
    return (length >= 0 && static_cast<size_t>(length) < sizeof(path->text)) ||
           refuse("%s%s%s is too long: a path may have at most %zu characters", directory, slash,
                  text, sizeof(path->text) - 1);
}

bool ctl_read_signature_path(const char *text, ctl_path *path) {
    if (!ctl_read_path(text, path))
        return false;
    for (const char *c = path->text; *c != '\0'; ++c)
        if (strchr(harmless_characters, *c) == nullptr)
            return refuse("%s: a shell reads this path, so only letters, digits and "
                          "/._-+,=@%%: are allowed; rename the file",
                          path->text);
    return strlen(path->text) <= signature_path_max ||
           refuse("%s is too long: a signature's path may have at most %zu characters", path->text,
                  signature_path_max);
}
