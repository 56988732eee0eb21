#include "client/temporary_file.h"

#include "client/message.h"
#include "format/protocol.h"
#include "format/usage_file.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

namespace {

constexpr char file_name[] = "/usage.json";

/// Here and not in the owner: a signal's handler has to find them. Empty while there is nothing.
char folder[UTM_APP_CONFIG_PATH_SIZE - sizeof(file_name) + 1];
char file[UTM_APP_CONFIG_PATH_SIZE];
/// What the daemon calls the file until it is whole, and leaves when it is killed then.
char unfinished[sizeof(folder) + sizeof(usage_file_new_name)];

/// Only what a signal's handler may do. Twice: the daemon may be at work, and make the unfinished
/// file or give it its name in between.
void remove_all() {
    for (int round = 0; round < 2; ++round) {
        unlink(unfinished);
        unlink(file);
        rmdir(folder);
    }
}

/// The signal's own effect has been put back, and follows when the handler returns.
void remove_and_end(int signal_number) {
    remove_all();
    raise(signal_number);
}

/// A signal that is ignored, as under nohup, stays so.
void remove_on(int signal_number) {
    struct sigaction old = {};
    if (sigaction(signal_number, nullptr, &old) != 0 || old.sa_handler == SIG_IGN)
        return;
    struct sigaction action = {};
    action.sa_handler = remove_and_end;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(signal_number, &action, nullptr);
}

bool make_folder(const char *parent) {
    const int length = snprintf(folder, sizeof(folder), "%s/utm_appctl.XXXXXX", parent);
    if (static_cast<size_t>(length) >= sizeof(folder)) {
        errno = ENAMETOOLONG;
        return false;
    }
    return mkdtemp(folder) != nullptr;
}

/// The daemon gives its file the owner and mode of the one that is there, so it stays ours.
bool make_file() {
    snprintf(file, sizeof(file), "%s%s", folder, file_name);
    snprintf(unfinished, sizeof(unfinished), "%s/%s", folder, usage_file_new_name);
    const int fd = open(file, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd >= 0)
        close(fd);
    return fd >= 0;
}

} // namespace

ctl_temporary_file::~ctl_temporary_file() {
    if (folder[0] != '\0')
        remove_all();
    folder[0] = file[0] = '\0';
}

ctl_exit ctl_temporary_file::make() {
    const char *parent = getenv("TMPDIR");
    if (parent == nullptr || parent[0] != '/')
        parent = "/tmp";
    for (const int signal_number : {SIGHUP, SIGINT, SIGTERM})
        remove_on(signal_number);
    // A reader that goes away ends the output, not the program before it has cleaned up.
    signal(SIGPIPE, SIG_IGN);
    if (!make_folder(parent)) {
        folder[0] = '\0';
        return ctl_fail(CTL_BROKEN, "cannot create a folder in %s (%s); set TMPDIR to another",
                        parent, strerror(errno));
    }
    if (!make_file())
        return ctl_fail(CTL_BROKEN, "cannot create %s (%s); set TMPDIR to another folder", file,
                        strerror(errno));
    return CTL_DONE;
}

const char *ctl_temporary_file::path() const {
    return file;
}
