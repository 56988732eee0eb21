#include "client/output_file.h"

#include "client/output.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// As any new file has, since others are to read it.
mode_t usual_mode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

} // namespace

ctl_output_file::~ctl_output_file() {
    if (unfinished_[0] != '\0')
        unlink(unfinished_);
    file_.reset(); // hands the text over
    free(text_);
}

ctl_exit ctl_output_file::open(const char *path, const char *key) {
    if (path != nullptr)
        return open_file(path);
    key_ = key;
    return key != nullptr ? open_text() : CTL_DONE;
}

ctl_exit ctl_output_file::open_text() {
    file_.reset(open_memstream(&text_, &size_));
    return file_ != nullptr ? CTL_DONE : ctl_fail(CTL_BROKEN, "out of memory");
}

ctl_exit ctl_output_file::open_file(const char *path) {
    struct stat status = {};
    if (lstat(path, &status) == 0 && !S_ISREG(status.st_mode)) // a device would be replaced
        return ctl_fail(CTL_USAGE, "cannot write %s: it is not a regular file", path);
    const int length = snprintf(unfinished_, sizeof(unfinished_), "%s.XXXXXX", path);
    const bool fits = static_cast<size_t>(length) < sizeof(unfinished_);
    fd_guard fd(fits ? mkostemp(unfinished_, O_CLOEXEC) : -1);
    if (fd.get() < 0) {
        unfinished_[0] = '\0';
        return ctl_fail(CTL_USAGE, "cannot write %s: %s", path,
                        strerror(fits ? errno : ENAMETOOLONG));
    }
    fchmod(fd.get(), usual_mode());
    file_.reset(fdopen(fd.get(), "w"));
    if (file_ == nullptr)
        return ctl_fail(CTL_BROKEN, "out of memory");
    fd.release(); // the stream's from here on
    path_ = path;
    return CTL_DONE;
}

ctl_exit ctl_output_file::commit() {
    if (key_ != nullptr)
        return print_text();
    if (file_ == nullptr)
        return CTL_DONE;
    const bool is_written = fflush(file_.get()) == 0 && ferror(file_.get()) == 0;
    if (!is_written || rename(unfinished_, path_) != 0)
        return ctl_fail(CTL_BROKEN, "%s could not be written (%s)", path_, strerror(errno));
    unfinished_[0] = '\0';
    return CTL_DONE;
}

ctl_exit ctl_output_file::print_text() {
    const bool is_whole = fflush(file_.get()) == 0 && ferror(file_.get()) == 0;
    if (!is_whole || text_ == nullptr)
        return ctl_fail(CTL_BROKEN, "out of memory");
    ctl_document document;
    document.add_text(key_, text_);
    return document.print();
}
