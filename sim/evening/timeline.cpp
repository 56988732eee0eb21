#include "sim/evening/timeline.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <unistd.h>

namespace {

struct look {
    const char *name;
    const char *colour;
};

look look_of(voice who) {
    switch (who) {
    case voice::family:
        return {"Ana   ", "\033[32m"};
    case voice::daemon:
        return {"daemon", "\033[33m"};
    case voice::router:
        return {"router", "\033[36m"};
    case voice::usage:
        return {"usage ", "\033[35m"};
    default:
        return {"system", "\033[34m"};
    }
}

/// Lines of a usual terminal end here; what is behind it moves to a line of its own.
constexpr int line_columns = 100;
/// "HH:MM", the voice, and two blanks behind each of them.
constexpr int margin_columns = 15;

/// Some two hundred lines are played in forty seconds.
constexpr std::chrono::milliseconds slot_of_a_line(210);
/// What an eye needs at least, also after a stretch in which the daemon worked and nobody spoke.
constexpr std::chrono::milliseconds shortest_look(50);

const char *paint(const timeline &out, const char *colour) {
    return out.colour ? colour : "";
}

void pause(timeline *out) {
    fflush(stdout);
    if (out->slot.count() == 0)
        return;
    out->next += out->slot;
    std::this_thread::sleep_until(
        std::max(out->next, std::chrono::steady_clock::now() + shortest_look));
}

} // namespace

timeline timeline_open(bool fast) {
    const char *no_colour = getenv("NO_COLOR");
    bool wanted = no_colour == nullptr || *no_colour == '\0';
    return {.colour = wanted && isatty(STDOUT_FILENO) != 0,
            .slot = fast ? std::chrono::milliseconds(0) : slot_of_a_line,
            .next = std::chrono::steady_clock::now()};
}

void timeline_say(timeline *out, time_t when, voice who, const std::string &text,
                  const std::string &meaning) {
    char clock[8] = {};
    strftime(clock, sizeof clock, "%H:%M", localtime(&when));
    look style = look_of(who);
    printf("%s  %s%s%s  %s", clock, paint(*out, style.colour), style.name, paint(*out, "\033[0m"),
           text.c_str());
    if (!meaning.empty()) {
        bool fits = margin_columns + text.size() + meaning.size() + 4 <= line_columns;
        printf("%s%*s%s(%s)%s", fits ? "" : "\n", fits ? 2 : margin_columns, "",
               paint(*out, "\033[2m"), meaning.c_str(), paint(*out, "\033[0m"));
    }
    putchar('\n');
    pause(out);
}

void timeline_title(timeline *out, const std::string &text) {
    printf("\n%s%s%s\n", paint(*out, "\033[1m"), text.c_str(), paint(*out, "\033[0m"));
    pause(out);
}

void timeline_note(timeline *out, const std::string &text) {
    printf("%*s%s\n", margin_columns, "", text.c_str());
    pause(out);
}

void timeline_complain(timeline *out, const std::string &text) {
    printf("%sexpected: %s%s\n", paint(*out, "\033[31m"), text.c_str(), paint(*out, "\033[0m"));
    pause(out);
}
