#pragma once
/// Owners of what C gives out. The client shares no code with the daemon but the wire format, so
/// that either can change without the other.

#include <cstdio>
#include <cstdlib>
#include <json-c/json.h>
#include <memory>
#include <unistd.h>

struct ctl_release {
    void operator()(json_object *document) const { json_object_put(document); }
    void operator()(FILE *file) const { fclose(file); }
};

/// Owns one reference to a document.
using ctl_json = std::unique_ptr<json_object, ctl_release>;
/// Owns an open stream.
using ctl_file = std::unique_ptr<FILE, ctl_release>;

/// Owns a descriptor.
class ctl_descriptor {
public:
    ctl_descriptor() = default;
    explicit ctl_descriptor(int fd) : fd_(fd) {}
    ~ctl_descriptor() { reset(-1); }
    ctl_descriptor(const ctl_descriptor &) = delete;
    ctl_descriptor &operator=(const ctl_descriptor &) = delete;

    int get() const { return fd_; }
    void reset(int fd) {
        if (fd_ >= 0)
            close(fd_);
        fd_ = fd;
    }

private:
    int fd_ = -1;
};
