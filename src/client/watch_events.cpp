#include "client/watch_events.h"

#include "client/text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

/// When people want to be told that their time is running out, in minutes.
constexpr int32_t announcements[] = {15, 5};

const ctl_seen_person *find_person(const ctl_look &look, int32_t number) {
    for (const ctl_seen_person &person : look.people)
        if (person.is.number == number)
            return &person;
    return nullptr;
}

const ctl_seen_app *find_app(const ctl_look &look, const ctl_seen_person &person, int32_t app_id) {
    for (const ctl_seen_app &app : household_records(look.apps, person.apps))
        if (app.is.rule.app_id == app_id)
            return &app;
    return nullptr;
}

bool is_cut_off(const ctl_seen_person &person) {
    return person.is.is_known && person.is.cut_off();
}

bool is_same_day(int64_t one, int64_t other) {
    const tm first = ctl_local_day(one, 0);
    const tm second = ctl_local_day(other, 0);
    return first.tm_yday == second.tm_yday && first.tm_year == second.tm_year;
}

/// @return whether the person's time runs out at all
bool is_limited(const ctl_standing &is) {
    return is.is_known && is.limits_on && is.enabled && is.limit < household_no_limit;
}

/// @return the least announcement that holds for what is left, or 0
int32_t announcement_of(int64_t left) {
    int32_t least = 0;
    for (const int32_t minutes : announcements)
        if (left <= minutes)
            least = minutes;
    return least;
}

bool has_other_figures(const ctl_standing &one, const ctl_standing &other) {
    return one.is_known != other.is_known || one.limits_on != other.limits_on ||
           one.enabled != other.enabled || one.limit != other.limit || one.extend != other.extend ||
           memcmp(&one.used, &other.used, sizeof(one.used)) != 0;
}

/// The events of one comparison.
class comparison {
public:
    comparison(const ctl_look &before, ctl_look &now, bool all, ctl_events *events)
        : before_(before), now_(now), all_(all), events_(events) {}

    void compare_daemon() {
        if (before_.is_taken ? before_.is_there != now_.is_there : !now_.is_there || all_)
            tell(now_.is_there ? ctl_event_kind::back : ctl_event_kind::gone);
        if (before_.is_taken && !is_same_day(before_.time, now_.time))
            tell(ctl_event_kind::new_day);
        if (now_.is_there && (before_.is_seen ? before_.limits_on != now_.limits_on : all_))
            tell(now_.limits_on ? ctl_event_kind::limits_on : ctl_event_kind::limits_off);
    }

    void compare_people() {
        for (ctl_seen_person &person : now_.people)
            compare_person(find_person(before_, person.is.number), &person);
        for (const ctl_seen_person &person : before_.people)
            if (find_person(now_, person.is.number) == nullptr)
                lose_person(person);
    }

    bool is_complete() const { return complete_; }

private:
    void tell(ctl_event_kind kind, const ctl_seen_person &person = {},
              const ctl_seen_app &app = {}) {
        complete_ = events_->add({kind, now_.limits_on, now_.time, person, app}) && complete_;
    }

    /// What somebody is when they are seen first is no change, unless everything is asked for.
    /// @param was  null for somebody new
    void compare_person(const ctl_seen_person *was, ctl_seen_person *person) {
        const bool is_told = was != nullptr || all_;
        if (was == nullptr && (before_.is_seen || all_))
            tell(ctl_event_kind::added, *person);
        if (is_told && (was == nullptr || is_cut_off(*was) != is_cut_off(*person)))
            tell(is_cut_off(*person) ? ctl_event_kind::cut_off : ctl_event_kind::let_in, *person);
        announce(was, person);
        if (is_told)
            compare_apps(was, *person);
        if (all_ && (was == nullptr || has_other_figures(was->is, person->is)))
            tell(ctl_event_kind::used, *person);
    }

    /// Somebody whom the daemon does not know for a moment, or whose limit does not hold, is
    /// not told again what they know.
    void announce(const ctl_seen_person *was, ctl_seen_person *person) {
        person->announced = was != nullptr ? was->announced : 0;
        if (!is_limited(person->is))
            return;
        const int64_t left = person->is.left();
        const int32_t present = announcement_of(left);
        const int32_t last = person->announced == 0 ? INT32_MAX : person->announced;
        person->announced = present;
        if (was != nullptr && left > 0 && present != 0 && present < last)
            tell(ctl_event_kind::left, *person);
    }

    void compare_apps(const ctl_seen_person *was, const ctl_seen_person &person) {
        for (const ctl_seen_app &app : household_records(now_.apps, person.apps)) {
            const ctl_seen_app *old =
                was == nullptr ? nullptr : find_app(before_, *was, app.is.rule.app_id);
            if (old != nullptr ? old->is.blocked != app.is.blocked : app.is.blocked || all_)
                tell(app.is.blocked ? ctl_event_kind::blocked : ctl_event_kind::released, person,
                     app);
        }
        if (was == nullptr)
            return;
        for (const ctl_seen_app &old : household_records(before_.apps, was->apps))
            if (find_app(now_, person, old.is.rule.app_id) == nullptr)
                lose_rule(person, old);
    }

    void lose_rule(const ctl_seen_person &person, ctl_seen_app app) {
        const bool was_blocked = app.is.blocked;
        app.is.blocked = false;
        if (was_blocked)
            tell(ctl_event_kind::released, person, app);
        if (all_)
            tell(ctl_event_kind::free, person, app);
    }

    void lose_person(const ctl_seen_person &person) {
        if (all_)
            for (const ctl_seen_app &app : household_records(before_.apps, person.apps))
                tell(ctl_event_kind::free, person, app);
        tell(ctl_event_kind::removed, person);
    }

    const ctl_look &before_;
    ctl_look &now_;
    bool all_;
    ctl_events *events_;
    bool complete_ = true;
};

constexpr const char *words[] = {"back",     "gone",    "new-day", "limits-on", "limits-off",
                                 "added",    "cut-off", "let-in",  "left",      "blocked",
                                 "released", "free",    "used",    "removed"};

} // namespace

const char *ctl_event_word(ctl_event_kind kind) {
    return words[static_cast<int>(kind)];
}

bool ctl_has_person(const ctl_event &event) {
    return event.kind >= ctl_event_kind::added;
}

bool ctl_has_app(const ctl_event &event) {
    return event.kind >= ctl_event_kind::blocked && event.kind <= ctl_event_kind::free;
}

ctl_event_text ctl_event_sentence(const ctl_event &event) {
    ctl_event_text sentence;
    const char *name = event.person.name.text;
    const ctl_standing &is = event.person.is;
    const char *app = event.app.name.text;
    const ctl_time_text used = ctl_time_of(is.used.daily);
    const ctl_time_text left = ctl_time_of(is.left());
    const auto write = [&sentence](const char *format, auto... arguments) {
        snprintf(sentence.text, sizeof(sentence.text), format, arguments...);
    };
    switch (event.kind) {
    case ctl_event_kind::back:
        write("the daemon answers%s", "");
        break;
    case ctl_event_kind::gone:
        write("the daemon does not answer%s", "");
        break;
    case ctl_event_kind::new_day:
        write("a new day begins%s", "");
        break;
    case ctl_event_kind::limits_on:
    case ctl_event_kind::limits_off:
        write("limits are %s", event.limits_on ? "on" : "off");
        break;
    case ctl_event_kind::added:
        write("%s is in the household file now", name);
        break;
    case ctl_event_kind::cut_off:
        write("%s is cut off: %s used", name, used.text);
        break;
    case ctl_event_kind::let_in:
        if (is_limited(is))
            write("%s is let in again: %s left", name, left.text);
        else
            write("%s is let in again", name);
        break;
    case ctl_event_kind::left:
        write("%s has %s left", name, left.text);
        break;
    case ctl_event_kind::blocked:
        write("%s is blocked for %s", app, name);
        break;
    case ctl_event_kind::released:
        write("%s is released for %s", app, name);
        break;
    case ctl_event_kind::free:
        write("%s has no rule for %s", app, name);
        break;
    case ctl_event_kind::used:
        if (!is.is_known)
            write("%s is unknown to the daemon", name);
        else if (is_limited(is))
            write("%s has used %s, %s left", name, used.text, left.text);
        else
            write("%s has used %s", name, used.text);
        break;
    case ctl_event_kind::removed:
        write("%s is no longer in the household file", name);
        break;
    }
    return sentence;
}

void ctl_describe_event(const ctl_event &event, ctl_document *document) {
    document->add_text("event", ctl_event_word(event.kind));
    document->add_int("time", event.time);
    document->add_text("text", ctl_event_sentence(event).text);
    if (!ctl_has_person(event))
        return;
    const ctl_standing &is = event.person.is;
    document->add_int("profile", is.number);
    document->add_text("name", event.person.name.text);
    if (is.is_known) {
        document->add_int("today", is.used.daily);
        document->add_bool("enabled", is.enabled);
        document->add_int("limit", is.limit);
        document->add_int("extend", is.extend);
        document->add_int("left", is.left());
        document->add_bool("cut_off", is.cut_off());
    }
    if (!ctl_has_app(event))
        return;
    document->add_int("app", event.app.is.rule.app_id);
    document->add_text("app_name", event.app.name.text);
    document->add_bool("blocked", event.app.is.blocked);
}

ctl_look *ctl_looks::next() {
    ctl_look &look = looks_[1 - last_];
    look.people.clear();
    look.apps.clear();
    look.is_there = false;
    return &look;
}

bool ctl_looks::settle(bool all, ctl_events *events) {
    ctl_look &before = looks_[last_];
    ctl_look &now = looks_[1 - last_];
    comparison of(before, now, all, events);
    of.compare_daemon();
    now.is_taken = before.is_taken = true;
    now.is_seen = true;
    before.is_there = false;
    before.time = now.time;
    if (!now.is_there)
        return of.is_complete();
    of.compare_people();
    last_ = 1 - last_;
    return of.is_complete();
}
