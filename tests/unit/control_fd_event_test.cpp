#include "control/fd_event.h"

#include "tests/lib/world.h"

#include <array>
#include <cerrno>
#include <climits>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// What the callbacks saw, one word each: "r5" for a read event of descriptor 5.
std::string served;
/// What a callback does to the table, by descriptor.
std::map<int, std::function<void()>> on_served;

int serve(char what, int fd, void *data) {
    served += what + std::to_string(fd);
    if (data != nullptr)
        served += *static_cast<const char *>(data);
    served += ' ';
    if (on_served.contains(fd))
        on_served[fd]();
    return -1; // nobody looks at it
}

const socket_event_handler handler = {
    [](int fd, void *data) { return serve('w', fd, data); },
    [](int fd, void *data) { return serve('r', fd, data); },
    [](int fd, void *data) { return serve('e', fd, data); },
};

class FdEvent : public testing::Test {
protected:
    void SetUp() override {
        world::reset();
        fd_event_reset();
        served.clear();
        on_served.clear();
    }
    void TearDown() override {
        fd_event_reset();
        for (const int fd : opened_)
            close(fd);
    }

    /// One end of a connection whose other end has written something (or only exists).
    int connection(bool has_data) {
        std::array<int, 2> ends = {};
        if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0 ||
            (has_data && write(ends[1], "x", 1) != 1))
            abort();
        opened_.insert(opened_.end(), ends.begin(), ends.end());
        return ends[0];
    }
    int ready() { return connection(true); }
    int idle() { return connection(false); }

    static void watch(const std::vector<int> &fds) {
        for (const int fd : fds)
            fd_event_add(fd, fd_event_read, nullptr);
    }

    std::vector<int> opened_;
};

/// @return what one pass serves
std::string pass() {
    served.clear();
    EXPECT_EQ(utm_app_config_loop(&handler), 0);
    return served;
}

/// The same for a pass in which all that is watched is ready: no descriptor needs to be open.
std::string pass_with_all_ready() {
    world::on_select([](int, const timeval &) { return 1; });
    const std::string seen = pass();
    world::on_select(nullptr);
    return seen;
}

std::string r(int fd) {
    return "r" + std::to_string(fd) + " ";
}

std::string w(int fd) {
    return "w" + std::to_string(fd) + " ";
}

// ---- The table -----------------------------------------------------------------------------

TEST_F(FdEvent, RefusesDescriptorsOutOfRange) {
    for (const int fd : {-1, INT_MIN, 128, INT_MAX}) {
        // The descriptor is checked before the kind.
        fd_event_add(fd, fd == 128 ? 7 : fd_event_read, nullptr);
        EXPECT_EQ(world::trace(), "log Add fd failed: " + std::to_string(fd) + "\n");
        EXPECT_FALSE(fd_event_is_registered(fd)) << fd;
    }
    EXPECT_EQ(fd_event_max_fd(), -1);
    EXPECT_EQ(pass_with_all_ready(), "");
}

TEST_F(FdEvent, TakesDescriptors0To127) {
    std::string all;
    for (int fd = 127; fd >= 0; --fd) {
        fd_event_add(fd, fd_event_read, nullptr);
        all += r(fd);
    }
    EXPECT_EQ(fd_event_max_fd(), 127);
    EXPECT_EQ(pass_with_all_ready(), all);
    EXPECT_EQ(fd_event_del(64), 0);
    fd_event_add(64, fd_event_write, nullptr);
    EXPECT_TRUE(fd_event_is_registered(64));
    EXPECT_EQ(world::trace(), "");
}

TEST_F(FdEvent, KeepsTheFirstRegistrationOfADescriptor) {
    char first = 'a';
    char second = 'b';
    fd_event_add(5, fd_event_read, &first);
    for (const int kind : {fd_event_write, 7}) {
        fd_event_add(5, kind, &second);
        EXPECT_EQ(world::trace(), "log Add fd failed: 5\n");
    }
    EXPECT_EQ(pass_with_all_ready(), "r5a ");
}

TEST_F(FdEvent, PassesOverUnknownKindsWithoutALine) {
    for (const int kind : {-1, 2, INT_MIN, INT_MAX})
        fd_event_add(5, kind, nullptr);
    EXPECT_EQ(world::trace(), "");
    EXPECT_FALSE(fd_event_is_registered(5));
    EXPECT_EQ(fd_event_max_fd(), -1);
}

TEST_F(FdEvent, RemovesOnlyWhatIsRegistered) {
    fd_event_add(5, fd_event_read, nullptr);
    for (const int fd : {-1, INT_MIN, 0, 4, 6, 127, 128, INT_MAX})
        EXPECT_EQ(fd_event_del(fd), -1) << fd;
    EXPECT_EQ(fd_event_del(5), 0);
    EXPECT_EQ(fd_event_del(5), -1);
    EXPECT_EQ(world::trace(), "");
}

TEST_F(FdEvent, MovesTheLastEntryIntoTheSlotThatBecomesFree) {
    struct {
        const char *name;
        std::vector<int> steps; ///< registers, or with a minus sign unregisters
        std::string order;
        int highest;
    } const table[] = {
        {"nothing", {0}, "r0 ", 0},
        {"first", {10, 11, 13, 12, -10}, "r12 r11 r13 ", 13},
        {"middle", {10, 11, 12, 13, -11}, "r10 r13 r12 ", 13},
        {"last", {10, 11, 12, 13, -13}, "r10 r11 r12 ", 12},
        {"two in the middle", {10, 11, 12, 13, -11, -12}, "r10 r13 ", 13},
        {"one that was moved", {10, 11, 12, 13, -10, -13}, "r12 r11 ", 12},
        {"all", {10, 11, 12, 13, -13, -12, -11, -10}, "", -1},
        {"one that comes back", {10, 11, 12, -10, 10}, "r12 r11 r10 ", 12},
        {"the highest, for a lower one", {5, 9, -9, 3}, "r5 r3 ", 5},
        {"the highest, for one below it", {5, 9, -9, 8}, "r5 r8 ", 8},
        {"the highest, for itself", {5, 9, -9, 9}, "r5 r9 ", 9},
        {"the highest, for a higher one", {127, 1, -127, 12}, "r1 r12 ", 12},
    };
    for (const auto &row : table) {
        fd_event_reset();
        for (const int step : row.steps)
            if (step >= 0)
                fd_event_add(step, fd_event_read, nullptr);
            else
                EXPECT_EQ(fd_event_del(-step), 0) << row.name;
        EXPECT_EQ(fd_event_max_fd(), row.highest) << row.name;
        EXPECT_EQ(fd_event_max_fd(), row.highest) << row.name << ", asked again";
        EXPECT_EQ(pass_with_all_ready(), row.order) << row.name;
    }
}

TEST_F(FdEvent, ForgetsEverythingOnReset) {
    fd_event_add(5, fd_event_read, nullptr);
    fd_event_add(6, fd_event_write, nullptr);
    fd_event_reset();
    EXPECT_EQ(fd_event_max_fd(), -1);
    EXPECT_EQ(fd_event_del(5), -1);
    EXPECT_EQ(pass_with_all_ready(), "");
}

// ---- A pass --------------------------------------------------------------------------------

TEST_F(FdEvent, WatchesUpToTheHighestDescriptorForASecond) {
    std::vector<int> seen;
    world::on_select([&](int descriptors, const timeval &timeout) {
        seen.insert(seen.end(), {descriptors, static_cast<int>(timeout.tv_sec),
                                 static_cast<int>(timeout.tv_usec)});
        return 0;
    });
    fd_event_add(5, fd_event_read, nullptr);
    fd_event_add(90, fd_event_read, nullptr);
    pass();
    EXPECT_EQ(fd_event_del(90), 0);
    pass();
    EXPECT_EQ(fd_event_del(5), 0);
    pass();
    EXPECT_EQ(seen, (std::vector<int>{91, 1, 0, 6, 1, 0, 0, 1, 0}));
}

TEST_F(FdEvent, ServesWhatIsReadyInSlotOrderUntilItIsRead) {
    const int early = ready();
    const int quiet = idle();
    const int late = ready();
    watch({late, quiet, early});
    EXPECT_EQ(pass(), r(late) + r(early));
    EXPECT_EQ(pass(), r(late) + r(early));
    EXPECT_EQ(fd_event_is_ready(late), 1);
    EXPECT_EQ(fd_event_is_ready(quiet), 0);
    EXPECT_EQ(fd_event_is_ready(early), 1);
}

TEST_F(FdEvent, LooksForWhatEachDescriptorIsWatchedFor) {
    const int writer = idle();
    const int reader = idle();
    const int other = ready();
    char mark = '!';
    fd_event_add(writer, fd_event_write, &mark);
    fd_event_add(reader, fd_event_read, &mark);
    fd_event_add(other, fd_event_read, &mark);
    EXPECT_EQ(pass(), "w" + std::to_string(writer) + "! r" + std::to_string(other) + "! ");
    EXPECT_EQ(fd_event_is_ready(writer), 1);
    EXPECT_EQ(fd_event_is_ready(reader), 0);
    EXPECT_EQ(fd_event_del(writer), 0);
    for (const int fd : {INT_MIN, -1, 0, writer, 127, 128, INT_MAX})
        EXPECT_EQ(fd_event_is_ready(fd), 0) << fd << " is not registered";
}

TEST_F(FdEvent, ServesAClientThatHangsUp) {
    const int fd = idle();
    close(opened_.back());
    opened_.pop_back();
    watch({fd});
    EXPECT_EQ(pass(), r(fd));
}

TEST_F(FdEvent, FixesWhatAPassServesBeforeACallbackChangesTheTable) {
    const int first = ready();
    const int second = ready();
    const int third = ready();
    const auto add = [](int fd, int kind) { fd_event_add(fd, kind, nullptr); };
    struct {
        const char *name;
        std::vector<int> watched;
        std::function<void()> on_first;
        std::string now, next, trace;
    } const table[] = {
        {"removes a later one",
         {first, second, third},
         [&] { fd_event_del(second); },
         r(first) + r(third),
         r(first) + r(third),
         ""},
        {"removes itself",
         {first, second, third},
         [&] { fd_event_del(first); },
         r(first) + r(second) + r(third),
         r(third) + r(second),
         ""},
        {"adds one",
         {first},
         [&] { add(second, fd_event_read); },
         r(first),
         r(first) + r(second),
         ""},
        {"makes a reader a writer",
         {first, second},
         [&] {
             fd_event_del(second);
             add(second, fd_event_write);
         },
         r(first),
         r(first) + w(second),
         "log BUG: there should be a write event for " + std::to_string(second) + "\n"},
    };
    for (const auto &row : table) {
        SetUp();
        watch(row.watched);
        on_served[first] = row.on_first;
        EXPECT_EQ(pass(), row.now) << row.name;
        EXPECT_EQ(world::trace(), row.trace) << row.name;
        on_served.clear();
        EXPECT_EQ(pass(), row.next) << row.name;
    }
}

TEST_F(FdEvent, ServesAWriterThatBecameAReaderDuringThePassAsAWriter) {
    const int first = ready();
    const int changed = idle();
    fd_event_add(first, fd_event_read, nullptr);
    fd_event_add(changed, fd_event_write, nullptr);
    on_served[first] = [&] {
        fd_event_del(changed);
        fd_event_add(changed, fd_event_read, nullptr);
    };
    EXPECT_EQ(pass(), r(first) + w(changed));
    EXPECT_EQ(world::trace(),
              "log BUG: there should be a read event for " + std::to_string(changed) + "\n");
}

TEST_F(FdEvent, GoesOnOnlyAfterAnInterruptedSelect) {
    struct {
        int error, result;
    } const table[] = {{EINTR, 0}, {EBADF, -1}};
    fd_event_add(5, fd_event_read, nullptr);
    for (const auto &row : table) {
        world::on_select([&](int, const timeval &) {
            errno = row.error;
            return -1;
        });
        EXPECT_EQ(utm_app_config_loop(&handler), row.result) << row.error;
    }
    EXPECT_EQ(served, "");
    EXPECT_EQ(world::trace(), "");
}

TEST_F(FdEvent, FailsOnADescriptorThatWasClosedWithoutBeingRemoved) {
    const int fd = ready();
    const int closed = ready();
    watch({fd, closed});
    close(closed);
    std::erase(opened_, closed);
    EXPECT_EQ(utm_app_config_loop(&handler), -1);
    EXPECT_EQ(served, "");
}

TEST_F(FdEvent, LeavesTheDescriptorPausedLastOutOfOnePass) {
    const int first = ready();
    const int second = ready();
    watch({first, second});
    fd_event_pause(first);
    fd_event_pause(second);
    EXPECT_EQ(pass(), r(first));
    EXPECT_EQ(pass(), r(first) + r(second));
}

TEST_F(FdEvent, PausesNothingForADescriptorOutOfRangeOrAfterAReset) {
    const int fd = ready();
    for (const int paused : {-1, INT_MIN, 128, INT_MAX, fd}) {
        fd_event_pause(paused);
        if (paused == fd)
            fd_event_reset();
        watch({fd});
        EXPECT_EQ(pass(), r(fd)) << paused;
        fd_event_reset();
    }
}

} // namespace
