#pragma once
/// What the tests of redirected paths share: a look at the machine behind the sandbox, and calls by
/// their names.

#include <dlfcn.h>
#include <functional>
#include <set>
#include <string>
#include <sys/types.h>
#include <utility>

/// Names the folder that the sandbox was told to keep, below the machine's /tmp.
inline constexpr char KEPT_VARIABLE[] = "UTM_TEST_KEPT";

/// @return the private folder's name
std::string root();

/// @return a name by which the machine's own file is reached: links of /proc are not redirected
std::string on_machine(const std::string &path);

/// @return a name by which the private file is reached, without any redirection
std::string in_private(const std::string &path);

/// @return what there is, its identity and the time of its last change; empty when there is nothing
std::string described(const std::string &path);

bool exists(const std::string &path);

/// @return a call of that name, as a program that is started in the sandbox gets it
template <class Function>
Function *call(const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_DEFAULT, name));
}

/// A place in /tmp where both a test and the machine can have something, emptied by its owner.
struct place {
    std::string folder = "/tmp/utm_redirection." + std::to_string(own_pid());
    std::string path = folder + "/it";

    place();
    place(const place &) = delete;
    place &operator=(const place &) = delete;
    ~place();

private:
    static pid_t own_pid();
};

/// Runs something in a child.
/// @return its exit status, or -1
int status_of_child(const std::function<void()> &in_child);

/// What the calls of these tests are named. Another test compares them with what the library has.
const std::set<std::string> &path_call_names();
const std::set<std::string> &answering_call_names();
const std::set<std::string> &program_call_names();
const std::set<std::string> &socket_call_names();
