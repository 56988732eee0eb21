/// The client's runs in which one of its calls fails: it does what it was asked, or says why not.

#include "sim/harness/files.h"
#include "tests/faults/calls.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

int ctl_main(int argc, char **argv);

namespace {

using faults::call;

constexpr char out_path[] = "/tmp/client.out";
constexpr char err_path[] = "/tmp/client.err";
constexpr char names_path[] = "/tmp/client.names";

struct run_t {
    int status = -1; ///< of the process, as `wait` has it
    std::array<int, faults::calls> counted = {};
    std::string out = {};
    std::string err = {};
};

void redirect(int fd, const char *path) {
    const int to = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (to < 0 || dup2(to, fd) < 0)
        abort();
}

/// Runs the client in a process of its own.
run_t run(std::vector<std::string> words, const faults::fault &what) {
    using counts_t = std::array<int, faults::calls>;
    static counts_t *const counts = static_cast<counts_t *>(
        mmap(nullptr, sizeof(counts_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    *counts = {};
    fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        redirect(STDOUT_FILENO, out_path);
        redirect(STDERR_FILENO, err_path);
        words.insert(words.begin(), "utm_appctl");
        std::vector<char *> arguments;
        for (std::string &word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        faults::begin(what);
        const int status = ctl_main(static_cast<int>(words.size()), arguments.data());
        faults::suspend();
        *counts = faults::counted();
        faults::leave(status);
    }
    run_t result;
    if (pid < 0 || waitpid(pid, &result.status, 0) != pid)
        abort();
    result.counted = *counts;
    result.out = sim_read_file(out_path);
    result.err = sim_read_file(err_path);
    return result;
}

void expect_done_or_told(const run_t &run, const run_t &plain) {
    ASSERT_TRUE(WIFEXITED(run.status)) << "signal " << WTERMSIG(run.status);
    const int status = WEXITSTATUS(run.status);
    // A file of names that nobody asked for is a warning when it cannot be read.
    EXPECT_TRUE(run.err == plain.err || run.err.starts_with("utm_appctl: ")) << run.err;
    if (status == WEXITSTATUS(plain.status)) {
        EXPECT_EQ(run.out, plain.out);
        return;
    }
    EXPECT_GT(status, 0);
    EXPECT_LE(status, 4);
    EXPECT_NE(run.err, "");
}

/// json-c's own allocations are not among them: 0.16 leaves out what it has no memory for, and says
/// nothing.
TEST(FaultsOfTheClient, AreToldOrDoNotMatter) {
    ASSERT_TRUE(sim_write_file(names_path, "305 video\n306 games\n"));
    const std::string household = UTM_SOURCE_DIR "/tests/unit/golden/household.json";
    const std::vector<std::string> commands[] = {
        {"report", household},
        {"--names", names_path, "policy", "rule", "7", "video=45m", "games=block"},
        {"weekday", "set", "3", "all", "2h"},
    };
    for (const std::vector<std::string> &words : commands) {
        const run_t plain = run(words, {});
        for (const call which : {call::allocation, call::open, call::stat}) {
            const int count = plain.counted[static_cast<size_t>(which)];
            for (int nth = 1; nth <= count; ++nth)
                for (const bool onwards : {false, true}) {
                    SCOPED_TRACE(words[0] + ": " + faults::name_of(which) + " " +
                                 std::to_string(nth) + (onwards ? " and all after it" : ""));
                    expect_done_or_told(run(words, {which, nth, onwards}), plain);
                }
            printf("%s: %d calls of %s\n", words[0].c_str(), count, faults::name_of(which));
        }
    }
}

} // namespace
