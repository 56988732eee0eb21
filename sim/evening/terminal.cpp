#include "sim/evening/terminal.h"

#include "sim/harness/appctl.h"

namespace {

/// A warning is no success either: every word on standard error is one too many.
bool is_well(const sim_outcome &outcome) {
    return outcome.how.ended && outcome.how.status == 0 && outcome.err.empty();
}

std::string complaint(const typed_words &words, const sim_outcome &outcome) {
    std::string how = "exit status " + std::to_string(outcome.how.status);
    if (!outcome.how.ended)
        how = "no end";
    else if (outcome.how.signal != 0)
        how = "signal " + std::to_string(outcome.how.signal);
    return sim_appctl_line(words) + " succeeds: " + how + "\n" + outcome.err;
}

/// The shell's status for a program that it cannot start.
constexpr int no_such_program = 127;

bool is_hopeless(const sim_exit &how) {
    return !how.ended || how.status == no_such_program;
}

/// @param typed  the command line as it is shown
std::string type(stage *set, const typed_words &words, const std::string &typed,
                 const std::string &meaning) {
    if (set->broken)
        return {};
    ++set->typed;
    if (!set->hushed)
        timeline_say(&set->out, sim_clock_now(set->clock), voice::family, "$ " + typed, meaning);
    return terminal_ask(set, words);
}

} // namespace

std::string terminal_ask(stage *set, const typed_words &words) {
    if (set->broken)
        return {};
    const sim_outcome outcome = sim_appctl(set->options, words);
    if (is_well(outcome))
        return outcome.out;
    stage_expect(set, false, complaint(words, outcome));
    set->broken = is_hopeless(outcome.how);
    return {};
}

void terminal_do(stage *set, const typed_words &words, const std::string &meaning) {
    const std::string printed = type(set, words, sim_appctl_line(words), meaning);
    stage_expect(set, printed.empty(), "nothing is to be said: " + printed);
    stage_follow(set);
}

std::string terminal_show(stage *set, const typed_words &words, const std::string &meaning,
                          size_t last_lines) {
    std::string typed = sim_appctl_line(words);
    if (last_lines > 0)
        typed += " | tail -n " + std::to_string(last_lines);
    const std::string printed = type(set, words, typed, meaning);
    const std::vector<std::string> lines = sim_split_lines(printed);
    stage_expect(set, lines.size() > last_lines, typed + " prints enough lines");
    const size_t left_out =
        last_lines > 0 && lines.size() > last_lines ? lines.size() - last_lines : 0;
    for (size_t i = left_out; i < lines.size(); ++i)
        timeline_note(&set->out, lines[i]);
    stage_follow(set);
    return printed;
}

std::string terminal_save(stage *set, const typed_words &words, const std::string &path,
                          const std::string &meaning) {
    const std::string file = path.substr(path.rfind('/') + 1);
    const std::string printed = type(set, words, sim_appctl_line(words) + " > " + file, meaning);
    stage_expect(set, sim_write_file(path, printed), path + " can be written");
    stage_follow(set);
    return printed;
}
