#include "client/apply_memory.h"

#include "core/regular_file.h"
#include "core/write_whole.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char default_folder[] = "/var/run/utm_appd";
constexpr char lock_name[] = "apply.lock";
constexpr char new_name[] = ".new";
constexpr size_t size_limit = size_t{2} * 1024 * 1024;
constexpr timespec lock_pause = {.tv_sec = 0, .tv_nsec = 50'000'000};

namespace key {
constexpr char complete[] = "complete";
constexpr char limits[] = "limits";
constexpr char people[] = "people";
constexpr char number[] = "number";
constexpr char enforced[] = "enforced";
constexpr char weekdays[] = "weekdays";
constexpr char devices[] = "devices";
constexpr char rules[] = "rules";
constexpr char release[] = "release";
constexpr char scratch[] = "scratch";
} // namespace key

ctl_exit cannot_use(const char *path, const char *reason) {
    return ctl_fail(CTL_BROKEN,
                    "cannot use the folder %s (%s): set UTM_APPCTL_STATE to one that is yours and "
                    "that nobody else may write",
                    path, reason);
}

bool is_ours_alone(int fd) {
    struct stat status = {};
    return fstat(fd, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// ---- Writing -------------------------------------------------------------------------------

/// Adds to lists and objects until memory runs out.
struct writer {
    bool complete = true;

    json_object *add(json_object *object, const char *name, json_object *value) {
        complete = complete && object != nullptr && value != nullptr &&
                   json_object_object_add(object, name, value) == 0;
        return checked(value);
    }
    json_object *append(json_object *list, json_object *value) {
        complete = complete && list != nullptr && value != nullptr &&
                   json_object_array_add(list, value) == 0;
        return checked(value);
    }
    json_object *add_list(json_object *object, const char *name) {
        return add(object, name, json_object_new_array());
    }
    void append_int(json_object *list, int32_t value) { append(list, json_object_new_int(value)); }
    void append_mac(json_object *list, const uint8_t *mac) {
        append(list, json_object_new_string(mac_text(mac).text));
    }

private:
    /// A value that found no place is nobody's.
    json_object *checked(json_object *value) {
        if (complete)
            return value;
        json_object_put(value);
        return nullptr;
    }
};

json_object *write_person(writer *to, json_object *list, int32_t number, bool enforced,
                          const int32_t *weekday_limits) {
    json_object *person = to->append(list, json_object_new_object());
    to->add(person, key::number, json_object_new_int(number));
    to->add(person, key::enforced, json_object_new_boolean(enforced));
    json_object *weekdays = to->add_list(person, key::weekdays);
    for (int32_t day = 0; day < days_per_week; ++day)
        to->append_int(weekdays, weekday_limits[day]);
    return person;
}

void write_rules(writer *to, json_object *person, std::span<const config_policy_rule_t> rules) {
    json_object *list = to->add_list(person, key::rules);
    for (const config_policy_rule_t &rule : rules) {
        json_object *element = to->append(list, json_object_new_array());
        to->append_int(element, rule.app_id);
        to->append_int(element, rule.action);
        to->append_int(element, rule.daily_limit);
    }
}

void write_state_person(writer *to, json_object *list, const ctl_daemon_state &state,
                        const ctl_daemon_person &person) {
    json_object *written =
        write_person(to, list, person.number, person.enabled, person.weekday_limits);
    json_object *devices = to->add_list(written, key::devices);
    for (const ctl_mac &mac : household_records(state.devices, person.devices))
        to->append_mac(devices, mac.bytes);
    write_rules(to, written, household_records(state.rules, person.rules));
}

void write_household_person(writer *to, json_object *list, const household_t &household,
                            const household_person_t &person) {
    json_object *written =
        write_person(to, list, person.number, ctl_is_enforced(person), person.weekday_limits);
    json_object *devices = to->add_list(written, key::devices);
    for (const household_device_t &device : household_records(household.devices, person.devices))
        to->append_mac(devices, device.mac);
    write_rules(to, written, household_records(household.rules, person.rules));
}

bool is_of_household(const household_t &household, int32_t number) {
    return household_person_of(household, number) != nullptr;
}

/// @return false when memory ran out
bool add_once(const ctl_mac &mac, plain_vector<ctl_mac> *devices) {
    return ctl_contains(*devices, mac) || devices->add(mac);
}

// ---- Reading -------------------------------------------------------------------------------

json_object *member(json_object *object, const char *name) {
    json_object *value = nullptr;
    return json_object_is_type(object, json_type_object) &&
                   json_object_object_get_ex(object, name, &value) != 0
               ? value
               : nullptr;
}

bool read_macs(json_object *list, plain_vector<ctl_mac> *devices) {
    const size_t count = json_array_size(list);
    for (size_t i = 0; i < count; ++i) {
        json_object *element = json_object_array_get_idx(list, i);
        ctl_mac mac;
        if (json_object_is_type(element, json_type_string) &&
            mac_parse(json_object_get_string(element), mac.bytes) && !devices->add(mac))
            return false;
    }
    return true;
}

bool read_rules(json_object *list, plain_vector<config_policy_rule_t> *rules) {
    const size_t count = json_array_size(list);
    for (size_t i = 0; i < count; ++i) {
        json_object *element = json_object_array_get_idx(list, i);
        if (!json_object_is_type(element, json_type_array))
            continue;
        if (!rules->add({json_int(json_object_array_get_idx(element, 0)),
                         json_int(json_object_array_get_idx(element, 1)),
                         json_int(json_object_array_get_idx(element, 2))}))
            return false;
    }
    return true;
}

bool read_person(json_object *element, ctl_daemon_state *state) {
    if (member(element, key::number) == nullptr)
        return true;
    ctl_daemon_person person = {};
    person.number = json_int(member(element, key::number));
    person.enabled = json_object_get_boolean(member(element, key::enforced)) != 0;
    json_object *weekdays = json_array_member(element, key::weekdays);
    for (size_t day = 0; day < days_per_week; ++day)
        person.weekday_limits[day] = day < json_array_size(weekdays)
                                         ? json_int(json_object_array_get_idx(weekdays, day))
                                         : household_no_limit;
    person.devices.first = state->devices.size();
    person.rules.first = state->rules.size();
    if (!read_macs(json_array_member(element, key::devices), &state->devices) ||
        !read_rules(json_array_member(element, key::rules), &state->rules))
        return false;
    person.devices.count = state->devices.size() - person.devices.first;
    person.rules.count = state->rules.size() - person.rules.first;
    return state->people.add(person);
}

bool read_memory(json_object *root, ctl_apply_memory *memory) {
    memory->exists = true;
    memory->is_complete = json_object_get_boolean(member(root, key::complete)) != 0;
    memory->applied.active = json_object_get_boolean(member(root, key::limits)) != 0;
    json_object *scratch = member(root, key::scratch);
    memory->has_scratch = scratch != nullptr;
    memory->scratch = json_int(scratch);
    json_object *people = json_array_member(root, key::people);
    for (size_t i = 0; i < json_array_size(people); ++i)
        if (!read_person(json_object_array_get_idx(people, i), &memory->applied))
            return false;
    json_object *release = json_array_member(root, key::release);
    for (size_t i = 0; i < json_array_size(release); ++i)
        if (!memory->release.add(json_int(json_object_array_get_idx(release, i))))
            return false;
    return read_macs(json_array_member(root, key::devices), &memory->devices);
}

} // namespace

const char *ctl_state_folder_path() {
    const char *told = getenv("UTM_APPCTL_STATE");
    return told != nullptr && told[0] != '\0' ? told : default_folder;
}

ctl_exit ctl_state_folder_open(const char *path, ctl_state_folder *folder) {
    if (path[0] != '/' || strlen(path) >= sizeof(folder->path))
        return cannot_use(path, "its path has to begin with / and to be short");
    strcpy(folder->path, path);
    if (mkdir(path, S_IRWXU) != 0 && errno != EEXIST)
        return cannot_use(path, strerror(errno));
    folder->fd.reset(open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (folder->fd.get() < 0)
        return cannot_use(path, strerror(errno));
    return is_ours_alone(folder->fd.get()) ? CTL_DONE : cannot_use(path, "others may write there");
}

ctl_exit ctl_state_folder_lock(ctl_state_folder *folder, int32_t timeout_s) {
    folder->lock.reset(openat(folder->fd.get(), lock_name,
                              O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (folder->lock.get() < 0)
        return cannot_use(folder->path, strerror(errno));
    timespec start = {};
    clock_gettime(CLOCK_MONOTONIC, &start);
    while (flock(folder->lock.get(), LOCK_EX | LOCK_NB) != 0) {
        timespec now = {};
        clock_gettime(CLOCK_MONOTONIC, &now);
        char holder[16] = {};
        if (errno != EWOULDBLOCK && errno != EINTR)
            return cannot_use(folder->path, strerror(errno));
        if (now.tv_sec - start.tv_sec >= timeout_s) {
            if (pread(folder->lock.get(), holder, sizeof(holder) - 1, 0) < 0)
                holder[0] = '\0';
            return ctl_fail(CTL_REFUSED,
                            "another apply, process %d, is at work: try again, or wait longer "
                            "with -t",
                            atoi(holder));
        }
        nanosleep(&lock_pause, nullptr);
    }
    char own[16];
    const int length = snprintf(own, sizeof(own), "%d\n", static_cast<int>(getpid()));
    // Only for the message above.
    if (ftruncate(folder->lock.get(), 0) != 0 ||
        pwrite(folder->lock.get(), own, static_cast<size_t>(length), 0) != length)
        return cannot_use(folder->path, strerror(errno));
    return CTL_DONE;
}

ctl_state_path ctl_state_file(const ctl_state_folder &folder, const char *name) {
    ctl_state_path path;
    strcpy(path.text, folder.path);
    strcat(path.text, "/");
    strcat(path.text, name);
    return path;
}

ctl_exit ctl_state_write(const ctl_state_folder &folder, const char *name, json_object *document) {
    size_t size = 0;
    const char *text =
        document == nullptr
            ? nullptr
            : json_object_to_json_string_length(document, JSON_C_TO_STRING_PLAIN, &size);
    if (text == nullptr)
        return ctl_fail(CTL_BROKEN, "out of memory");
    const int at = folder.fd.get();
    unlinkat(at, new_name, 0);
    const fd_guard file(openat(at, new_name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                               S_IRUSR | S_IWUSR));
    const bool is_written = file.get() >= 0 &&
                            write_whole(text, size,
                                        [&file](const char *next, size_t left) {
                                            return write(file.get(), next, left);
                                        }) &&
                            fsync(file.get()) == 0 && renameat(at, new_name, at, name) == 0 &&
                            fsync(at) == 0;
    return is_written ? CTL_DONE
                      : ctl_fail(CTL_BROKEN, "cannot write %s/%s (%s)", folder.path, name,
                                 strerror(errno));
}

void ctl_state_remove(const ctl_state_folder &folder, const char *name) {
    unlinkat(folder.fd.get(), name, 0);
}

ctl_exit ctl_memory_read(const ctl_state_folder &folder, ctl_apply_memory *memory) {
    if (folder.fd.get() < 0)
        return CTL_DONE;
    const fd_guard file(regular_file_open(ctl_applied_name, folder.fd.get()));
    if (file.get() < 0 && errno == ENOENT)
        return CTL_DONE;
    const json_ptr root(file.get() < 0 ? nullptr : usage_file_read(file.get(), size_limit));
    if (!json_object_is_type(root.get(), json_type_object)) {
        ctl_say("%s/%s is damaged and ignored: what was applied last is not known; apply --repair "
                "mends what that could leave behind",
                folder.path, ctl_applied_name);
        return CTL_DONE;
    }
    return read_memory(root.get(), memory) ? CTL_DONE : ctl_fail(CTL_BROKEN, "out of memory");
}

json_ptr ctl_memory_under_way(const ctl_apply_memory &memory, const household_t &household,
                              const ctl_daemon_state &state, const plain_vector<int32_t> &release,
                              int32_t scratch) {
    json_ptr root(json_object_new_object());
    writer to;
    to.add(root.get(), key::complete, json_object_new_boolean(0));
    to.add(root.get(), key::limits, json_object_new_boolean(memory.applied.active));
    json_object *people = to.add_list(root.get(), key::people);
    for (const ctl_daemon_person &person : memory.applied.people)
        write_state_person(&to, people, memory.applied, person);
    json_object *devices = to.add_list(root.get(), key::devices);
    plain_vector<ctl_mac> all;
    bool fits = true;
    for (const ctl_mac &mac : memory.devices)
        fits = fits && add_once(mac, &all);
    for (const ctl_mac &mac : state.devices)
        fits = fits && add_once(mac, &all);
    for (const household_device_t &device : household.devices)
        fits = fits && add_once(ctl_mac_of(device.mac), &all);
    for (const ctl_mac &mac : all)
        to.append_mac(devices, mac.bytes);
    json_object *numbers = to.add_list(root.get(), key::release);
    for (const int32_t number : release)
        to.append_int(numbers, number);
    to.add(root.get(), key::scratch, json_object_new_int(scratch));
    return fits && to.complete ? std::move(root) : nullptr;
}

json_ptr ctl_memory_at_end(const household_t &household, const ctl_daemon_state &state,
                           bool pruned) {
    json_ptr root(json_object_new_object());
    writer to;
    to.add(root.get(), key::complete, json_object_new_boolean(1));
    to.add(root.get(), key::limits, json_object_new_boolean(household.limits));
    json_object *people = to.add_list(root.get(), key::people);
    for (const household_person_t &person : household.people)
        write_household_person(&to, people, household, person);
    for (const ctl_daemon_person &person : state.people)
        if (!pruned && !is_of_household(household, person.number))
            write_state_person(&to, people, state, person);
    return to.complete ? std::move(root) : nullptr;
}
