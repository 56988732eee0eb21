/// Which paths lead into the sandbox, and that no redirected call goes untested.

#include "sim/preload/redirect.h"

#include "sim/harness/files.h"
#include "sim/harness/preload.h"
#include "sim/harness/program.h"
#include "tests/sandbox/support.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

struct lead {
    std::string directory;
    std::string path;
    std::string leads_to; ///< ROOT for the private folder, KEPT for the one that is kept
};

std::string filled_in(std::string text) {
    for (const auto &[word, value] :
         {std::pair<std::string, std::string>("ROOT", root()), {"KEPT", getenv(KEPT_VARIABLE)}})
        if (const size_t at = text.find(word); at != std::string::npos)
            text.replace(at, word.size(), value);
    return text;
}

std::string lead_from(const std::string &directory, const std::string &path) {
    EXPECT_EQ(chdir(directory.c_str()), 0) << directory;
    const std::string leads_to = static_cast<const char *>(sim_redirected(path.c_str()));
    EXPECT_EQ(chdir("/"), 0);
    return leads_to;
}

} // namespace

TEST(Redirection, LeadsIntoThePrivateFolder) {
    fs::create_directories("/tmp/folder/inner");
    const std::vector<lead> leads = {
        {"/", "/tmp", "ROOT/tmp"},
        {"/", "/tmp/", "ROOT/tmp/"},
        {"/", "/tmp/it", "ROOT/tmp/it"},
        {"/", "/tmp/it/", "ROOT/tmp/it/"},
        {"/", "//tmp//it", "ROOT/tmp/it"},
        {"/", "/tmp/./it", "ROOT/tmp/it"},
        {"/", "/tmp/folder/../it", "ROOT/tmp/it"},
        {"/", "/dev/../tmp/it", "ROOT/tmp/it"},
        {"/", "/../tmp/it", "ROOT/tmp/it"},
        {"/", "/dev/utm_app_config_socket", "ROOT/dev/utm_app_config_socket"},
        {"/", "tmp/it", "ROOT/tmp/it"},
        {"/", "./tmp/it/", "ROOT/tmp/it/"},
        {"/usr", "../tmp/it", "ROOT/tmp/it"},
        {"/dev", "utm_it", "ROOT/dev/utm_it"},
        // From inside, the system finds what is relative by itself.
        {"/tmp", "it", "it"},
        {"/tmp", "folder/../it", "folder/../it"},
        {"/tmp/folder", "../it", "../it"},
        {"/tmp/folder/inner", "../..", "../.."},
    };
    for (const lead &row : leads)
        EXPECT_EQ(lead_from(row.directory, row.path), filled_in(row.leads_to))
            << row.path << " from " << row.directory;
}

TEST(Redirection, LeavesOtherPathsAlone) {
    fs::create_directories("/tmp/folder");
    const std::vector<lead> leads = {
        {"/", "", ""},
        {"/", "/", "/"},
        {"/", "/tmpfile", "/tmpfile"},
        {"/", "/var/tmp/it", "/var/tmp/it"},
        {"/", "/tmp/../etc", "/tmp/../etc"},
        {"/", "/dev/null", "/dev/null"},
        {"/", "/proc/self/root/tmp", "/proc/self/root/tmp"},
        {"/", "tmpfile", "tmpfile"},
        {"/", "usr/../etc", "usr/../etc"},
        // From inside, one that leaves is led out: the system's ".." is the private folder.
        {"/tmp", "..", "/"},
        {"/tmp", "../etc", "/etc"},
        {"/tmp/folder", "../../usr/", "/usr/"},
    };
    for (const lead &row : leads)
        EXPECT_EQ(lead_from(row.directory, row.path), row.leads_to)
            << row.path << " from " << row.directory;
}

TEST(Redirection, PassesANullOn) {
    EXPECT_EQ(static_cast<const char *>(sim_redirected(nullptr)), nullptr);
}

TEST(Redirection, KeepsAFolderBelowTmp) {
    const std::string kept = getenv(KEPT_VARIABLE);
    EXPECT_EQ(lead_from("/", kept), kept);
    EXPECT_EQ(lead_from("/", kept + "/it"), kept + "/it");
    EXPECT_EQ(lead_from(kept, "it"), "it");
    // What only begins like it, and what is beside it, is private.
    EXPECT_EQ(lead_from("/", kept + "2"), root() + kept + "2");
    EXPECT_EQ(lead_from(kept, "../it"), root() + "/tmp/it");
}

TEST(Redirection, ShowsAKeptFolderAmongWhatIsInTmp) {
    const std::string kept = getenv(KEPT_VARIABLE);
    ASSERT_TRUE(sim_write_file(kept + "/it", "text"));

    EXPECT_TRUE(exists(on_machine(kept + "/it")));
    std::set<std::string> names;
    for (const auto &entry : fs::directory_iterator("/tmp"))
        names.insert(entry.path());
    EXPECT_EQ(names.count(kept), 1U);
    EXPECT_TRUE(fs::is_directory(kept));

    fs::remove(kept + "/it");
}

TEST(Redirection, HasATestForEachOfItsCalls) {
    // The clock's, and those of the system's log, which the daemon tests read.
    std::set<std::string> tested = {"_exit", "gettimeofday", "sleep", "syslog", "__syslog_chk"};
    for (const auto &names :
         {path_call_names(), answering_call_names(), program_call_names(), socket_call_names()})
        tested.insert(names.begin(), names.end());

    const sim_outcome listed =
        sim_run({"/usr/bin/nm", "-D", "--defined-only", "--format=posix", sim_built_preload()});
    std::set<std::string> replaced;
    for (const std::string &line : sim_split_lines(listed.out))
        replaced.insert(line.substr(0, line.find(' ')));

    EXPECT_EQ(replaced, tested);
}
