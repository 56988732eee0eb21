#include "sim/router/scenario.h"

#include "sim/harness/files.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>

namespace {

/// The reading of one file. Every statement returns what is wrong with it, or nothing.
struct reader {
    scenario *result;
    tm day = {}; ///< of the latest `date` line
    bool has_day = false;
};

/// A line that is taken apart from the left.
struct line_rest {
    const char *at;
};

std::string next_word(line_rest *rest) {
    while (isspace(static_cast<unsigned char>(*rest->at)))
        ++rest->at;
    const char *start = rest->at;
    while (*rest->at != '\0' && !isspace(static_cast<unsigned char>(*rest->at)))
        ++rest->at;
    return std::string(start, rest->at);
}

/// Whatever is left: a name for people, blanks within it included.
std::string remainder(line_rest rest) {
    std::string text = next_word(&rest);
    text += rest.at;
    while (!text.empty() && isspace(static_cast<unsigned char>(text.back())))
        text.pop_back();
    return text;
}

template <class Thing>
size_t find(const std::vector<Thing> &things, const std::string &handle) {
    size_t i = 0;
    while (i < things.size() && things[i].handle != handle)
        ++i;
    return i;
}

bool parse_number(const std::string &text, int32_t *number) {
    *number = static_cast<int32_t>(strtol(text.c_str(), nullptr, 10));
    return std::to_string(*number) == text;
}

bool parse_date(const std::string &text, tm *day) {
    int year = 0;
    int month = 0;
    int length = 0;
    tm parsed = {};
    if (sscanf(text.c_str(), "%4d-%2d-%2d%n", &year, &month, &parsed.tm_mday, &length) != 3 ||
        text[static_cast<size_t>(length)] != '\0')
        return false;
    parsed.tm_year = year - 1900;
    parsed.tm_mon = month - 1;
    *day = parsed;
    return month >= 1 && month <= 12 && parsed.tm_mday >= 1 && parsed.tm_mday <= 31;
}

bool parse_clock(const std::string &text, tm *moment) {
    int length = 0;
    const char *end = text.c_str();
    if (sscanf(end, "%2d:%2d%n", &moment->tm_hour, &moment->tm_min, &length) != 2)
        return false;
    end += length;
    if (*end == ':' && sscanf(end, ":%2d%n", &moment->tm_sec, &length) == 1)
        end += length;
    return *end == '\0' && moment->tm_hour >= 0 && moment->tm_hour <= 24 && moment->tm_min >= 0 &&
           moment->tm_min < 60 && moment->tm_sec >= 0 && moment->tm_sec < 60;
}

/// "[+days | YYYY-MM-DD] HH:MM[:SS]", local time.
std::string parse_moment(const reader &in, line_rest *rest, time_t *moment) {
    tm parsed = in.day;
    std::string word = next_word(rest);
    bool has_day = in.has_day;
    if (word[0] == '+') {
        int32_t days = 0;
        if (!parse_number(word.substr(1), &days))
            return "\"" + word + "\" is no number of days";
        parsed.tm_mday += days;
        word = next_word(rest);
    } else if (word.find('-') != std::string::npos) {
        if (!parse_date(word, &parsed))
            return "\"" + word + "\" is no date like 2030-01-31";
        has_day = true;
        word = next_word(rest);
    }
    if (!parse_clock(word, &parsed))
        return "\"" + word + "\" is no time like 18:05";
    if (!has_day)
        return "a time needs a date line before it";
    parsed.tm_isdst = -1;
    *moment = mktime(&parsed);
    return {};
}

std::string parse_span(const reader &in, line_rest *rest, scenario_span *span) {
    std::string error = parse_moment(in, rest, &span->from);
    if (error.empty())
        error = parse_moment(in, rest, &span->to);
    if (error.empty() && span->to <= span->from)
        error = "it ends before it begins; write +1 before a time of the next day";
    if (error.empty() && !next_word(rest).empty())
        error = "there is something after the times";
    return error;
}

/// @param what  what people call an entry
/// @return what is wrong: two of a kind would have the same handle
template <typename Entry>
std::string add(std::vector<Entry> *entries, const Entry &entry, const std::string &what) {
    if (find(*entries, entry.handle) < entries->size())
        return "there is another " + what + " " + entry.handle;
    entries->push_back(entry);
    return {};
}

std::string read_person(reader *in, line_rest rest) {
    scenario_person person = {.handle = next_word(&rest), .profile_id = 0, .name = {}};
    if (!parse_number(next_word(&rest), &person.profile_id))
        return "a person needs a handle, a profile id and a name";
    person.name = remainder(rest);
    return add(&in->result->people, person, "person");
}

std::string read_device(reader *in, line_rest rest) {
    scenario_device device = {.handle = next_word(&rest), .mac = {}, .person = 0, .name = {}};
    std::string person = next_word(&rest);
    device.person = find(in->result->people, person);
    if (device.person == in->result->people.size())
        return "there is no person " + person;
    device.mac = next_word(&rest);
    unsigned byte[6];
    char written[18];
    if (sscanf(device.mac.c_str(), "%2X:%2X:%2X:%2X:%2X:%2X", byte, byte + 1, byte + 2, byte + 3,
               byte + 4, byte + 5) != 6)
        return "\"" + device.mac + "\" is no address like 02:00:00:00:00:0A";
    snprintf(written, sizeof(written), "%02X:%02X:%02X:%02X:%02X:%02X", byte[0] & 0xFF,
             byte[1] & 0xFF, byte[2] & 0xFF, byte[3] & 0xFF, byte[4] & 0xFF, byte[5] & 0xFF);
    device.mac = written;
    device.name = remainder(rest);
    return add(&in->result->devices, device, "device");
}

std::string read_app(reader *in, line_rest rest) {
    scenario_app app = {.handle = next_word(&rest), .id = 0, .name = {}};
    if (!parse_number(next_word(&rest), &app.id))
        return "an app needs a handle, an id and a name";
    app.name = remainder(rest);
    return add(&in->result->apps, app, "app");
}

std::string read_use(reader *in, line_rest rest, bool has_app) {
    scenario_use use = {.device = 0, .app = scenario_use::NO_APP, .span = {}};
    std::string device = next_word(&rest);
    use.device = find(in->result->devices, device);
    if (use.device == in->result->devices.size())
        return "there is no device " + device;
    if (has_app) {
        std::string app = next_word(&rest);
        use.app = find(in->result->apps, app);
        if (use.app == in->result->apps.size())
            return "there is no app " + app;
    }
    std::string error = parse_span(*in, &rest, &use.span);
    if (error.empty())
        in->result->uses.push_back(use);
    return error;
}

std::string read_date(reader *in, line_rest rest) {
    std::string word = next_word(&rest);
    in->has_day = parse_date(word, &in->day);
    return in->has_day ? std::string() : "\"" + word + "\" is no date like 2030-01-31";
}

std::string read_line(reader *in, const std::string &line) {
    line_rest rest = {line.c_str()};
    std::string statement = next_word(&rest);
    if (statement.empty() || statement[0] == '#')
        return {};
    if (statement == "date")
        return read_date(in, rest);
    if (statement == "person")
        return read_person(in, rest);
    if (statement == "device")
        return read_device(in, rest);
    if (statement == "app")
        return read_app(in, rest);
    if (statement == "use")
        return read_use(in, rest, true);
    if (statement == "online")
        return read_use(in, rest, false);
    return "\"" + statement + "\" is none of date, person, device, app, use, online";
}

} // namespace

bool scenario_read(const std::string &path, scenario *result, std::string *error) {
    *result = {};
    reader in = {.result = result};
    int number = 0;
    for (const std::string &line : sim_split_lines(sim_read_file(path))) {
        ++number;
        std::string wrong = read_line(&in, line);
        if (wrong.empty())
            continue;
        *error = path + ":" + std::to_string(number) + ": " + wrong;
        return false;
    }
    return true;
}
