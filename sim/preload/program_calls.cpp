/// The calls that start a program, for the sandbox without namespaces (redirect.h): a program may
/// lie in the private /tmp, and PATH may name a folder there.

#include "sim/preload/call.h"
#include "sim/preload/redirect.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <spawn.h>
#include <unistd.h>

namespace {

/// A program's file: as named, or found in a folder of the PATH that lies in the sandbox. Whatever
/// is found elsewhere is libc's to find, with all its rules.
class found_program {
public:
    explicit found_program(const char *file) : chosen_(file) {
        const char *folder = getenv("PATH");
        if (folder == nullptr || strchr(file, '/') != nullptr)
            return;
        for (bool is_last = false; !is_last;) {
            const size_t length = strcspn(folder, ":");
            is_last = folder[length] == '\0';
            if (is_in(folder, length, file))
                break;
            folder += length + 1;
        }
    }
    found_program(const found_program &) = delete;
    found_program &operator=(const found_program &) = delete;

    operator const char *() const { return chosen_; }

private:
    /// @return whether the file is in that folder, which ends the search
    bool is_in(const char *folder, size_t length, const char *file) {
        const int size =
            snprintf(text_, sizeof(text_), "%.*s/%s", static_cast<int>(length), folder, file);
        if (static_cast<size_t>(size) >= sizeof(text_) || access(text_, X_OK) != 0)
            return false;
        const sim_redirected redirected(text_);
        if (static_cast<const char *>(redirected) != text_)
            chosen_ = text_;
        return true;
    }

    const char *chosen_;
    char text_[PATH_MAX];
};

using exec_call = int(const char *, char *const[], char *const[]);

int execute(const char *file, char *const arguments[], char *const environment[]) {
    return sim_next<exec_call *>("execve")(sim_redirected(file), arguments, environment);
}

/// Also runs a file without a first line that names its shell, as libc's search does.
int search_and_execute(const char *file, char *const arguments[], char *const environment[]) {
    const found_program program(file);
    return sim_next<exec_call *>("execvpe")(sim_redirected(program), arguments, environment);
}

/// The arguments of the calls that take them one by one. One list that is longer than anybody
/// writes by hand ends the program: a shortened one would start another program than was meant.
struct argument_list {
    char *words[1024];
    size_t count = 0;

    bool add(char *word) {
        if (count == sizeof(words) / sizeof(words[0]))
            abort();
        words[count++] = word;
        return word != nullptr;
    }

    /// The words up to the null that ends them.
    void add_all(char *word, va_list &more) {
        while (add(word))
            word = va_arg(more, char *);
    }
};

} // namespace

SIM_DEFINE(int, execve, (const char *file, char *const words[], char *const environment[])) {
    return execute(file, words, environment);
}

SIM_DEFINE(int, execv, (const char *file, char *const words[])) {
    return execute(file, words, environ);
}

SIM_DEFINE(int, execvpe, (const char *file, char *const words[], char *const environment[])) {
    return search_and_execute(file, words, environment);
}

SIM_DEFINE(int, execvp, (const char *file, char *const words[])) {
    return search_and_execute(file, words, environ);
}

SIM_DEFINE(int, execl, (const char *file, char *word, ...)) {
    argument_list list;
    va_list more;
    va_start(more, word);
    list.add_all(word, more);
    va_end(more);
    return execute(file, list.words, environ);
}

SIM_DEFINE(int, execlp, (const char *file, char *word, ...)) {
    argument_list list;
    va_list more;
    va_start(more, word);
    list.add_all(word, more);
    va_end(more);
    return search_and_execute(file, list.words, environ);
}

SIM_DEFINE(int, execle, (const char *file, char *word, ...)) {
    argument_list list;
    va_list more;
    va_start(more, word);
    list.add_all(word, more);
    char *const *environment = va_arg(more, char *const *);
    va_end(more);
    return execute(file, list.words, environment);
}

SIM_CALL(int, execveat,
         (int at, const char *path, char *const words[], char *const environment[], int flags),
         (at, sim_redirected(path, at), words, environment, flags))

SIM_CALL(int, posix_spawn,
         (pid_t * pid, const char *path, const posix_spawn_file_actions_t *actions,
          const posix_spawnattr_t *attributes, char *const words[], char *const environment[]),
         (pid, sim_redirected(path), actions, attributes, words, environment))

SIM_CALL(int, posix_spawnp,
         (pid_t * pid, const char *file, const posix_spawn_file_actions_t *actions,
          const posix_spawnattr_t *attributes, char *const words[], char *const environment[]),
         (pid, sim_redirected(found_program(file)), actions, attributes, words, environment))

SIM_CALL(int, posix_spawn_file_actions_addopen,
         (posix_spawn_file_actions_t * actions, int fd, const char *path, int flags, mode_t mode),
         (actions, fd, sim_redirected(path), flags, mode))

SIM_CALL(int, posix_spawn_file_actions_addchdir_np,
         (posix_spawn_file_actions_t * actions, const char *path), (actions, sim_redirected(path)))
