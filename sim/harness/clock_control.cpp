#include "sim/harness/clock_control.h"

#include "sim/preload/clock_page.h"

#include <fcntl.h>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

sim_clock::~sim_clock() {
    if (page != nullptr)
        munmap(page, sizeof(sim_clock_page));
}

static void *map_new_page(const std::string &path) {
    int fd = open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        return MAP_FAILED;
    void *mapped = MAP_FAILED;
    if (ftruncate(fd, sizeof(sim_clock_page)) == 0)
        mapped = mmap(nullptr, sizeof(sim_clock_page), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    close(fd);
    return mapped;
}

bool sim_clock_create(sim_clock *clock, const std::string &path, time_t start) {
    void *mapped = map_new_page(path);
    if (mapped == MAP_FAILED)
        return false;
    clock->path = path;
    clock->page = new (mapped) sim_clock_page{};
    clock->page->now.store(start);
    clock->page->controller.store(getpid());
    return true;
}

bool sim_clock_attach(sim_clock *clock, const std::string &path) {
    const int fd = open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return false;
    void *mapped = mmap(nullptr, sizeof(sim_clock_page), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    close(fd);
    if (mapped == MAP_FAILED)
        return false;
    clock->path = path;
    clock->page = static_cast<sim_clock_page *>(mapped);
    return true;
}

time_t sim_clock_now(const sim_clock &clock) {
    return clock.page->now.load();
}

bool sim_clock_wait_asleep(const sim_clock &clock, sim_timeout timeout) {
    const sim_clock_page *page = clock.page;
    return sim_wait_for(
        [page] { return page->taken.load() == page->granted.load() && page->sleeper.load() != 0; },
        timeout);
}

bool sim_clock_advance(sim_clock *clock, int seconds, sim_timeout timeout) {
    sim_clock_grant(clock, seconds);
    return sim_clock_wait_asleep(*clock, timeout);
}

void sim_clock_grant(sim_clock *clock, int seconds) {
    clock->page->granted.fetch_add(seconds);
}

void sim_clock_jump(sim_clock *clock, time_t delta) {
    clock->page->now.fetch_add(delta);
}

void sim_clock_forget_sleeper(sim_clock *clock) {
    clock->page->sleeper.store(0);
}
