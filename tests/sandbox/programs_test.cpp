/// Programs that lie in the private /tmp are started, by every call that starts one, and what they
/// start is in the sandbox too.

#include "sim/harness/files.h"
#include "sim/harness/program.h"
#include "tests/sandbox/support.h"

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int script_status = 42;

/// A folder of programs that only the sandbox has, and that is on the PATH.
class Programs : public testing::Test {
protected:
    void SetUp() override {
        fs::create_directory(here.folder + "/bin");
        provide("with_shell", "#!/bin/sh\nexit 42\n");
        // The searching calls hand such a file to the shell.
        provide("without_shell", "exit 42\n");
        // A folder that this user may not look into would change what a search ends with.
        setenv("PATH", (here.folder + "/bin:/usr/bin:/bin").c_str(), 1);
    }
    void TearDown() override { setenv("PATH", old_path.c_str(), 1); }

    std::string program(const std::string &name) const { return here.folder + "/bin/" + name; }

    void provide(const std::string &name, const std::string &text) const {
        ASSERT_TRUE(sim_write_file(program(name), text));
        ASSERT_EQ(chmod(program(name).c_str(), 0755), 0);
    }

    const place here;
    const std::string old_path = getenv("PATH");
    const std::string by_path = program("with_shell");
    char word[5] = "word";
    char *const words[2] = {word, nullptr};
};

int status_of_spawned(int spawned, pid_t pid) {
    int status = 0;
    if (spawned != 0 || waitpid(pid, &status, 0) != pid)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

const std::set<std::string> &program_call_names() {
    static const std::set<std::string> names = {"execve",
                                                "execv",
                                                "execvpe",
                                                "execvp",
                                                "execl",
                                                "execlp",
                                                "execle",
                                                "execveat",
                                                "posix_spawn",
                                                "posix_spawnp",
                                                "posix_spawn_file_actions_addopen",
                                                "posix_spawn_file_actions_addchdir_np"};
    return names;
}

TEST_F(Programs, StartByTheirPath) {
    const char *path = by_path.c_str();
    EXPECT_EQ(status_of_child([&] { execve(path, words, environ); }), script_status);
    EXPECT_EQ(status_of_child([&] { execv(path, words); }), script_status);
    EXPECT_EQ(status_of_child([&] { execvp(path, words); }), script_status);
    EXPECT_EQ(status_of_child([&] { execvpe(path, words, environ); }), script_status);
    EXPECT_EQ(status_of_child([&] { execl(path, word, nullptr); }), script_status);
    EXPECT_EQ(status_of_child([&] { execlp(path, word, nullptr); }), script_status);
    EXPECT_EQ(status_of_child([&] { execle(path, word, nullptr, environ); }), script_status);
    EXPECT_EQ(status_of_child([&] { execveat(AT_FDCWD, path, words, environ, 0); }), script_status);
}

TEST_F(Programs, StartByTheirNameOnThePath) {
    for (const char *name : {"with_shell", "without_shell"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(status_of_child([&] { execvp(name, words); }), script_status);
        EXPECT_EQ(status_of_child([&] { execvpe(name, words, environ); }), script_status);
        EXPECT_EQ(status_of_child([&] { execlp(name, word, nullptr); }), script_status);
    }
}

TEST_F(Programs, OfTheMachineStartByTheirNameToo) {
    char command[] = "-c";
    char text[] = "exit 7";
    char *const shell_words[] = {word, command, text, nullptr};
    EXPECT_EQ(status_of_child([&] { execvp("sh", shell_words); }), 7);
    EXPECT_EQ(status_of_child([&] { execlp("sh", word, command, text, nullptr); }), 7);
}

TEST_F(Programs, ThatAreNowhereDoNotStart) {
    EXPECT_EQ(status_of_child([&] {
                  execvp("no_such_program", words);
                  _exit(errno == ENOENT ? 99 : 98);
              }),
              99);
}

TEST_F(Programs, GetTheirArgumentsAndTheirEnvironment) {
    provide("tells", "#!/bin/sh\necho \"$1 $2 $WORD\" >" + here.path + "\n");
    const std::string path = program("tells");
    setenv("WORD", "c", 1);
    EXPECT_EQ(status_of_child([&] { execl(path.c_str(), "tells", "a", "b", nullptr); }), 0);
    EXPECT_EQ(sim_read_file(here.path), "a b c\n");
    EXPECT_EQ(status_of_child([&] { execlp("tells", "tells", "d", "e", nullptr); }), 0);
    EXPECT_EQ(sim_read_file(here.path), "d e c\n");
    unsetenv("WORD");
}

TEST_F(Programs, AreSpawned) {
    pid_t pid = -1;
    int spawned = posix_spawn(&pid, by_path.c_str(), nullptr, nullptr, words, environ);
    EXPECT_EQ(status_of_spawned(spawned, pid), script_status);
    spawned = posix_spawnp(&pid, "with_shell", nullptr, nullptr, words, environ);
    EXPECT_EQ(status_of_spawned(spawned, pid), script_status);
}

TEST_F(Programs, AreSpawnedWithFilesAndAFolderOfTheSandbox) {
    provide("tells", "#!/bin/sh\npwd\n");
    const std::string path = program("tells");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, here.path.c_str(), O_CREAT | O_WRONLY,
                                     0644);
    posix_spawn_file_actions_addchdir_np(&actions, here.folder.c_str());
    pid_t pid = -1;
    const int spawned = posix_spawn(&pid, path.c_str(), &actions, nullptr, words, environ);
    posix_spawn_file_actions_destroy(&actions);

    EXPECT_EQ(status_of_spawned(spawned, pid), 0);
    EXPECT_EQ(sim_read_file(here.path), here.folder + "\n");
    EXPECT_FALSE(exists(on_machine(here.path)));
}

TEST_F(Programs, AShellWorksInTheSandbox) {
    struct shell_line {
        std::string line;
        std::string prints;
    };
    const std::vector<shell_line> lines = {
        {"mkdir -p a/b && echo text >a/b/c && cat a/b/c", "text\n"},
        {"touch d && mv d a/e && ls a", "b\ne\n"},
        {"echo more >>a/b/c && wc -l <a/b/c", "2\n"},
        {"ln -s $PWD/a/b/c f && readlink f && cat f", here.folder + "/a/b/c\ntext\nmore\n"},
        {"cp a/b/c g && rm a/b/c && test ! -e a/b/c && cat g", "text\nmore\n"},
        {"cd a/b && pwd && cd ../.. && pwd", here.folder + "/a/b\n" + here.folder + "\n"},
        {"cd a/b && /bin/pwd", here.folder + "/a/b\n"},
        {"echo $PWD/g $PWD/f*", here.folder + "/g " + here.folder + "/f\n"},
        {"chmod 600 g && stat -c %a g", "600\n"},
        {"realpath ../../tmp", "/tmp\n"},
        {"mkfifo h && (echo passed >h & cat h)", "passed\n"},
        {"rm -r a && ls -d a 2>/dev/null || echo gone", "gone\n"},
        {"mktemp -d $PWD/i.XXXXXX | sed 's/[^.]*$/.../'", here.folder + "/i....\n"},
    };
    for (const shell_line &row : lines) {
        const std::string line = "cd " + here.folder + " && " + row.line;
        EXPECT_EQ(sim_run({"/bin/sh", "-c", line}).out, row.prints) << row.line;
    }
    EXPECT_TRUE(exists(in_private(here.folder + "/g")));
    EXPECT_TRUE(fs::is_empty(on_machine(here.folder)));
}
