#include "tests/lib/program.h"

#include "sim/harness/program.h"

std::ostream &operator<<(std::ostream &to, const program_end &end) {
    return to << "exit status " << end.status << "\n--- standard output:\n"
              << end.out << "--- standard error:\n"
              << end.err << "---";
}

program_end run_program(const std::vector<std::string> &command_line,
                        const std::function<void()> &in_child, sim_timeout timeout) {
    const sim_outcome outcome = sim_run(command_line, in_child, timeout);
    return {.status = outcome.how.status, .out = outcome.out, .err = outcome.err};
}
