/// A fake of the client of the router's message bus. It knows one call, the usage query of the
/// packet inspection engine's statistics service, in the two forms that the daemon issues.

#include "sim/harness/files.h"
#include "sim/router/command.h"
#include "sim/router/router_dir.h"
#include "sim/router/usage.h"

#include <string>
#include <vector>

namespace {

/// "001122334455 " to "00:11:22:33:44:55".
bool parse_mac(const std::string &piece, std::string *mac) {
    if (piece.find_first_not_of("0123456789ABCDEF") != 12 || piece[12] != ' ')
        return false;
    *mac = piece.substr(0, 2);
    for (size_t i = 2; i < 12; i += 2)
        *mac += ":" + piece.substr(i, 2);
    return true;
}

/// The device list: one address of twelve digits and a blank per device.
bool parse_device_list(const std::string &list, std::vector<std::string> *macs) {
    for (size_t at = 0; at < list.size(); at += 13) {
        std::string mac;
        if (!parse_mac(list.substr(at, 13), &mac))
            return false;
        macs->push_back(mac);
    }
    return !macs->empty();
}

/// Exactly `{"s":N,"e":N}` or `{"s":N,"e":N,"mac":"LIST"}`: the daemon does not write blanks or
/// another order, so neither is accepted.
bool parse_arguments(const std::string &text, usage_query *query) {
    long s = 0;
    long e = 0;
    if (sscanf(text.c_str(), "{\"s\":%ld,\"e\":%ld", &s, &e) != 2)
        return false;
    query->span = {s, e};
    std::string start = "{\"s\":" + std::to_string(s) + ",\"e\":" + std::to_string(e);
    query->router_wide = text == start + "}";
    if (query->router_wide)
        return true;
    start += ",\"mac\":\"";
    if (text.size() < start.size() + 2 || text.compare(0, start.size(), start) != 0 ||
        text.compare(text.size() - 2, 2, "\"}") != 0)
        return false;
    return parse_device_list(text.substr(start.size(), text.size() - 2 - start.size()),
                             &query->macs);
}

bool parse_command(int argc, char **argv, usage_query *query) {
    const std::vector<std::string> expected = {"-t", "2", "call", "lc-dpi.lc-dev-statd",
                                               "time_usage_hour"};
    const std::vector<std::string> given(argv + 1, argv + argc);
    return given.size() == 6 && std::equal(expected.begin(), expected.end(), given.begin()) &&
           parse_arguments(given[5], query);
}

std::string element_text(const usage_element &element) {
    return "\t\t{\n\t\t\t\"type\": \"" + std::string(element.type) +
           "\",\n\t\t\t\"app_id\": " + std::to_string(element.app_id) +
           ",\n\t\t\t\"total_time_usage\": " + std::to_string(element.minutes) + "\n\t\t}";
}

/// The client's own layout: tabs, and every member on a line.
std::string reply_text(const std::vector<usage_element> &elements) {
    std::string text = "{\n\t\"data\": [\n";
    for (size_t i = 0; i < elements.size(); ++i)
        text += element_text(elements[i]) + (i + 1 < elements.size() ? ",\n" : "");
    return text + "\n\t]\n}\n";
}

/// A reply that a test prescribes, byte by byte, for one kind of query or for both.
bool print_prescribed_reply(bool router_wide) {
    for (const char *name : {router_wide ? "reply.router" : "reply.profile", "reply"}) {
        if (!sim_router_holds(name))
            continue;
        std::string bytes = sim_read_file(sim_router_file(name).text);
        fwrite(bytes.data(), 1, bytes.size(), stdout);
        return true;
    }
    return false;
}

} // namespace

int main(int argc, char **argv) {
    const std::string line = sim_command_line("ubus", argc, argv);
    usage_query query;
    if (!parse_command(argc, argv, &query))
        return sim_refuse(line, "no such call");
    if (int status = sim_accept(line))
        return status;
    if (print_prescribed_reply(query.router_wide))
        return 0;
    scenario scene;
    std::string error;
    if (!scenario_read(sim_router_file("scenario").text, &scene, &error))
        return sim_refuse(line, error);
    fputs(reply_text(usage_of(scene, query)).c_str(), stdout);
    return 0;
}
