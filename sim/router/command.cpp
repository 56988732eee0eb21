#include "sim/router/command.h"

#include "sim/harness/files.h"
#include "sim/router/router_dir.h"

#include <algorithm>

/// A gate that nobody opens must not leave the fake behind for ever.
static constexpr sim_timeout AT_A_GATE = {std::chrono::seconds(60)};
static constexpr int GATE_STAYED_SHUT = 70;

static std::string quoted(const std::string &argument) {
    static const char plain[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                                "_./:=,+-@%";
    if (!argument.empty() && argument.find_first_not_of(plain) == std::string::npos)
        return argument;
    return "'" + argument + "'";
}

std::string sim_command_line(const char *program, int argc, char **argv) {
    std::string line = program;
    for (int i = 1; i < argc; ++i)
        line += " " + quoted(argv[i]);
    std::replace(line.begin(), line.end(), '\n', '?');
    return line;
}

/// Looks the command line up in a fault file, whose lines are "<value> <part of a command line>".
/// @return the value of the first line that fits; empty when none does
static std::string fault_value(const char *file, const std::string &command_line) {
    for (const std::string &line : sim_split_lines(sim_read_file(sim_router_file(file).text))) {
        size_t space = line.find(' ');
        if (space != std::string::npos &&
            command_line.find(line.substr(space + 1)) != std::string::npos)
            return line.substr(0, space);
    }
    return {};
}

static bool pass_gate(const std::string &command_line) {
    std::string gate = fault_value("gate", command_line);
    return gate.empty() ||
           sim_wait_for([&gate] { return access(gate.c_str(), F_OK) == 0; }, AT_A_GATE);
}

int sim_refuse(const std::string &command_line, const std::string &why) {
    sim_journal_append(("refused " + command_line + "\n").c_str());
    fprintf(stderr, "%s: %s\n", command_line.c_str(), why.c_str());
    return SIM_REFUSED;
}

int sim_accept(const std::string &command_line) {
    if (getenv(SIM_ROUTER_VARIABLE) == nullptr) {
        fprintf(stderr, "%s: %s names no simulated router\n", command_line.c_str(),
                SIM_ROUTER_VARIABLE);
        return SIM_REFUSED;
    }
    sim_journal_append((command_line + "\n").c_str());
    if (!pass_gate(command_line)) {
        fprintf(stderr, "%s: the gate stayed shut\n", command_line.c_str());
        return GATE_STAYED_SHUT;
    }
    return atoi(fault_value("fail", command_line).c_str());
}
