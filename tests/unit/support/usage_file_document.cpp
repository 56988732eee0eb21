#include "tests/unit/support/usage_file_document.h"

#include <functional>

namespace {

using usage_file::app_t;
using usage_file::document_t;
using usage_file::policy_t;
using usage_file::profile_t;
using usage_file::rule_t;

/// What becomes of one value.
struct edit_t {
    std::optional<size_t> place;
    std::optional<std::string> value; ///< none takes the value out
};

/// Writes JSON text and numbers every value on the way.
class writer_t {
public:
    explicit writer_t(const edit_t &edit) : edit_(edit) {}

    using body_t = std::function<void()>;

    void number(const std::string &key, int64_t value) {
        member(key, [&] { text_ += std::to_string(value); });
    }

    void object(const body_t &body) { enclosed('{', '}', body); }
    void array(const body_t &body) { enclosed('[', ']', body); }

    void member(const std::string &key, const body_t &body) {
        place("." + key, "\"" + key + "\":", body);
    }
    void element(size_t index, const body_t &body) {
        place("[" + std::to_string(index) + "]", "", body);
    }

    void raw(const std::string &value) { text_ += value; }

    std::string text_;
    std::vector<std::string> places_;

private:
    void enclosed(char open, char close, const body_t &body) {
        text_ += open;
        body();
        text_ += close;
    }

    void place(const std::string &step, const std::string &label, const body_t &body) {
        const std::string outer_path = path_;
        const size_t before = text_.size();
        path_ += step;
        const size_t index = places_.size();
        places_.push_back(path_.front() == '.' ? path_.substr(1) : path_);
        if (text_.back() != '{' && text_.back() != '[')
            text_ += ',';
        text_ += label;
        const size_t start = text_.size();
        body();
        path_ = outer_path;
        if (edit_.place != index)
            return;
        if (edit_.value)
            text_.replace(start, std::string::npos, *edit_.value);
        else
            text_.resize(before);
    }

    const edit_t &edit_;
    std::string path_;
};

template <typename T, typename Write>
void list(writer_t &to, const std::string &key, const std::vector<T> &values, Write write) {
    to.member(key, [&] {
        to.array([&] {
            for (size_t i = 0; i < values.size(); ++i)
                to.element(i, [&] { write(to, values[i]); });
        });
    });
}

void write_number(writer_t &to, int32_t value) {
    to.raw(std::to_string(value));
}

void write_string(writer_t &to, const std::string &value) {
    to.raw("\"" + value + "\"");
}

void write_app(writer_t &to, const app_t &app) {
    to.object([&] {
        to.number("app_id", app.id);
        to.number("daily_used", app.daily);
        to.number("weekly_used", app.weekly);
        to.number("monthly_used", app.monthly);
        to.number("next_day_idx", app.next);
        list(to, "prev_30_days", app.ring, write_number);
    });
}

void write_rule(writer_t &to, const rule_t &rule) {
    to.object([&] {
        to.number("app_id", rule.app_id);
        to.number("action", rule.action);
        to.number("daily_limit", rule.limit);
    });
}

void write_policy(writer_t &to, const policy_t &policy) {
    to.object([&] {
        to.number("app_policy_id", policy.id);
        list(to, "app_list", policy.rules, write_rule);
    });
}

void write_profile(writer_t &to, const profile_t &profile) {
    static const char *const labels[] = {"mon", "tues", "wed", "thur", "fri", "sat", "sun"};
    to.object([&] {
        to.number("user_profile_id", profile.id);
        for (size_t day = 0; day < profile.weekdays.size(); ++day)
            to.number(labels[day], profile.weekdays[day]);
        to.number("daily_extend", profile.extend);
        to.number("daily_used", profile.daily);
        to.number("weekly_used", profile.weekly);
        to.number("monthly_used", profile.monthly);
        to.number("blocked", profile.blocked);
        list(to, "app_stat_list", profile.apps, write_app);
        list(to, "device_list", profile.devices, write_string);
        if (profile.policy)
            to.member("app_policy", [&] { write_policy(to, *profile.policy); });
    });
}

void write_document(writer_t &to, const document_t &document) {
    to.object([&] {
        list(to, "user_profile_list", document.profiles, write_profile);
        to.number("timestamp", document.timestamp);
        list(to, "global_stat", document.router, write_app);
    });
}

std::string edited(const document_t &document, const edit_t &edit) {
    writer_t writer(edit);
    write_document(writer, document);
    return writer.text_;
}

} // namespace

namespace usage_file {

std::string text(const document_t &document) {
    return edited(document, {});
}

std::string text(const app_t &app) {
    const edit_t none;
    writer_t writer(none);
    write_app(writer, app);
    return writer.text_;
}

std::vector<std::string> places(const document_t &document) {
    const edit_t none;
    writer_t writer(none);
    write_document(writer, document);
    return writer.places_;
}

std::string text_with(const document_t &document, size_t place, const std::string &value) {
    return edited(document, {place, value});
}

std::string text_without(const document_t &document, size_t place) {
    return edited(document, {place, {}});
}

} // namespace usage_file
