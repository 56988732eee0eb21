#include "client/watch_programs.h"

#include "client/output.h"
#include "core/monotonic.h"
#include "core/own_folder.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// After it was asked to end.
constexpr int64_t grace_ms = 2000;
/// Descriptors that are closed where the system cannot close all at once.
constexpr int descriptors_closed = 1024;

struct dir_close {
    void operator()(DIR *folder) const { closedir(folder); }
};

struct program_name {
    char text[NAME_MAX + 1];
};

int compare_names(const void *left, const void *right) {
    return strcmp(static_cast<const program_name *>(left)->text,
                  static_cast<const program_name *>(right)->text);
}

/// @return the names in a folder that begin with no dot, in order; false when they cannot be read
bool read_names(int folder, plain_vector<program_name> *names) {
    fd_guard listed(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::unique_ptr<DIR, dir_close> opened(listed.get() < 0 ? nullptr
                                                                  : fdopendir(listed.get()));
    if (opened == nullptr)
        return false;
    listed.release(); // the list's from here on
    while (const dirent *entry = readdir(opened.get())) {
        program_name name = {};
        snprintf(name.text, sizeof(name.text), "%s", entry->d_name);
        if (name.text[0] != '.' && !names->add(name))
            return false;
    }
    if (names->size() > 1)
        qsort(names->begin(), names->size(), sizeof(program_name), compare_names);
    return true;
}

/// Other files may stand in the folder, such as settings.
bool is_executable(int folder, const char *name) {
    struct stat status = {};
    if (fstatat(folder, name, &status, 0) != 0 || !S_ISREG(status.st_mode) ||
        faccessat(folder, name, X_OK, 0) != 0)
        return false;
    const bool is_ours = status.st_uid == geteuid() || status.st_uid == 0;
    if (is_ours && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0)
        return true;
    ctl_say("%s is not run: somebody else may write it", name);
    return false;
}

void set_text(const char *name, const char *value) {
    setenv(name, value, 1);
}

void set_number(const char *name, int64_t value) {
    char text[24];
    snprintf(text, sizeof(text), "%lld", static_cast<long long>(value));
    setenv(name, text, 1);
}

/// What a program finds in its environment; the manual page lists it.
void set_environment(const ctl_event &event, const char *sentence) {
    for (const char *name :
         {"UTM_PERSON", "UTM_PERSON_NUMBER", "UTM_USED", "UTM_LIMIT", "UTM_BONUS", "UTM_LEFT",
          "UTM_CUT_OFF", "UTM_APPLICATION", "UTM_APPLICATION_NUMBER"})
        unsetenv(name);
    set_text("UTM_EVENT", ctl_event_word(event.kind));
    set_text("UTM_TEXT", sentence);
    set_number("UTM_TIME", event.time);
    if (!ctl_has_person(event))
        return;
    const ctl_standing &is = event.person.is;
    set_text("UTM_PERSON", event.person.name.text);
    set_number("UTM_PERSON_NUMBER", is.number);
    if (is.is_known) {
        set_number("UTM_USED", is.used.daily);
        set_number("UTM_LIMIT", is.limit);
        set_number("UTM_BONUS", is.extend);
        set_number("UTM_LEFT", is.left());
        set_number("UTM_ENFORCED", is.enabled);
        set_number("UTM_CUT_OFF", is.cut_off());
    }
    if (!ctl_has_app(event))
        return;
    set_text("UTM_APPLICATION", event.app.name.text);
    set_number("UTM_APPLICATION_NUMBER", event.app.is.rule.app_id);
    set_number("UTM_BLOCKED", event.app.is.blocked);
}

/// Leaves a program the standard streams alone, whatever this one was started with.
void close_others() {
#ifdef SYS_close_range
    if (syscall(SYS_close_range, STDERR_FILENO + 1, ~0U, 0) == 0)
        return;
#endif
    for (int fd = STDERR_FILENO + 1; fd < descriptors_closed; ++fd)
        close(fd);
}

/// Becomes the program. Its output goes where messages go, since standard output is for events.
[[noreturn]] void become(int folder, const char *name, const ctl_event &event, int input,
                         const sigset_t &mask) {
    const ctl_event_text sentence = ctl_event_sentence(event);
    setpgid(0, 0);
    set_environment(event, sentence.text);
    char path[NAME_MAX + 3];
    snprintf(path, sizeof(path), "./%s", name);
    char word[16];
    snprintf(word, sizeof(word), "%s", ctl_event_word(event.kind));
    char text[sizeof(sentence.text)];
    strcpy(text, sentence.text);
    char *arguments[] = {path, word, text, nullptr};
    if (fchdir(folder) == 0 && dup2(input, STDIN_FILENO) >= 0 &&
        dup2(STDERR_FILENO, STDOUT_FILENO) >= 0) {
        close_others();
        sigprocmask(SIG_SETMASK, &mask, nullptr);
        execv(path, arguments);
    }
    _exit(127);
}

/// @return the reading end of a pipe that holds the event's document; -1 when there is none
int document_of(const ctl_event &event) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return -1;
    const fd_guard writing(ends[1]);
    fd_guard reading(ends[0]);
    // A pipe holds at least a page, and a document is shorter.
    ctl_document document;
    ctl_describe_event(event, &document);
    const char *text = document.text();
    if (text == nullptr)
        return -1;
    const size_t size = strlen(text);
    return write(writing.get(), text, size) == static_cast<ssize_t>(size) ? reading.release() : -1;
}

void say_end(const char *name, const ctl_event &event, int status) {
    const char *word = ctl_event_word(event.kind);
    if (WIFEXITED(status) && WEXITSTATUS(status) != 0)
        ctl_say("%s ended with status %d for the event \"%s\"", name, WEXITSTATUS(status), word);
    else if (WIFSIGNALED(status))
        ctl_say("%s was ended by signal %d for the event \"%s\"", name, WTERMSIG(status), word);
}

} // namespace

ctl_exit ctl_programs::use(const char *path, int32_t timeout_s, const sigset_t &mask) {
    timeout_ms_ = int64_t{timeout_s} * 1000;
    mask_ = mask;
    if (path == nullptr)
        return CTL_DONE;
    size_t length = strlen(path);
    while (length > 1 && path[length - 1] == '/') // else a link would be followed unseen
        --length;
    if (length == 0 || length >= sizeof(path_))
        return ctl_fail(CTL_USAGE, "\"%s\" is no folder", path);
    memcpy(path_, path, length);
    path_[length] = '\0';
    const fd_guard folder(open_folder());
    return folder.get() >= 0 ? CTL_DONE : CTL_USAGE;
}

/// @return a descriptor, or -1 after a message
int ctl_programs::open_folder() const {
    const own_folder_t folder = {path_, false};
    const int fd = utm_app_open_own_folder(folder);
    if (fd < 0 && errno == EPERM)
        ctl_say("the programs in %s are not run: it has to be a folder of your own that nobody "
                "else may write",
                path_);
    else if (fd < 0)
        ctl_say("the programs in %s are not run (%s)", path_, strerror(errno));
    return fd;
}

void ctl_programs::tell(const ctl_event &event) {
    if (path_[0] == '\0')
        return;
    const fd_guard folder(open_folder());
    plain_vector<program_name> names;
    if (folder.get() < 0)
        return;
    if (!read_names(folder.get(), &names))
        ctl_say("the programs in %s are not run (%s)", path_, strerror(errno));
    for (const program_name &name : names)
        if (is_executable(folder.get(), name.text))
            add(name.text, event);
}

void ctl_programs::add(const char *name, const ctl_event &event) {
    job waiting = {};
    snprintf(waiting.name, sizeof(waiting.name), "%s", name);
    waiting.event = event;
    if (jobs_.size() >= ctl_jobs_max || !jobs_.add(waiting))
        ctl_say("%s is not told of \"%s\": %zu events wait already", name,
                ctl_event_sentence(event).text, jobs_.size());
}

void ctl_programs::attend() {
    collect();
    const int64_t now = monotonic_ms();
    for (job &of : jobs_)
        if (of.pid != 0 && now >= of.deadline_ms)
            end_late(&of, now);
    drop_over();
    for (job &of : jobs_)
        if (of.pid == 0 && !is_busy_before(of))
            of.is_over = !start(&of, now);
    drop_over();
}

void ctl_programs::collect() {
    int status = 0;
    for (pid_t ended = 0; (ended = waitpid(-1, &status, WNOHANG)) > 0;)
        for (job &of : jobs_)
            if (of.pid == ended) {
                if (!of.is_told_to_end)
                    say_end(of.name, of.event, status);
                of.is_over = true;
            }
}

void ctl_programs::end_late(job *of, int64_t now) {
    kill(-of->pid, of->is_told_to_end ? SIGKILL : SIGTERM);
    if (!of->is_told_to_end)
        ctl_say("%s took longer than %lld s for the event \"%s\", and is ended", of->name,
                static_cast<long long>(timeout_ms_ / 1000), ctl_event_word(of->event.kind));
    of->is_told_to_end = true;
    of->deadline_ms = now + grace_ms;
}

/// @return whether the program has an earlier event to deal with
bool ctl_programs::is_busy_before(const job &of) const {
    return std::any_of(jobs_.begin(), &of, [&of](const job &earlier) {
        return !earlier.is_over && strcmp(earlier.name, of.name) == 0;
    });
}

bool ctl_programs::start(job *of, int64_t now) {
    const fd_guard folder(open_folder());
    if (folder.get() < 0)
        return false;
    const fd_guard input(document_of(of->event));
    of->pid = input.get() < 0 ? -1 : fork();
    if (of->pid == 0)
        become(folder.get(), of->name, of->event, input.get(), mask_);
    if (of->pid < 0) {
        ctl_say("%s could not be started (%s)", of->name, strerror(errno));
        return false;
    }
    setpgid(of->pid, of->pid); // whoever of the two is first
    of->deadline_ms = now + timeout_ms_;
    return true;
}

void ctl_programs::drop_over() {
    const job *end =
        std::remove_if(jobs_.begin(), jobs_.end(), [](const job &of) { return of.is_over; });
    jobs_.keep(static_cast<size_t>(end - jobs_.begin()));
}

int64_t ctl_programs::wait_ms() const {
    int64_t least = -1;
    const int64_t now = monotonic_ms();
    for (const job &of : jobs_)
        if (of.pid != 0 && (least < 0 || of.deadline_ms - now < least))
            least = std::max<int64_t>(of.deadline_ms - now, 0);
    return least;
}

void ctl_programs::end() {
    for (const job &of : jobs_)
        if (of.pid != 0)
            kill(-of.pid, SIGTERM);
}
