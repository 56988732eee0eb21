/// The household's text, before json-c makes anything of it: what json-c would take without a word,
/// and where in the text its objections are.

#include "core/text.h"
#include "format/household_reader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace {

/// As many as people, each with a dozen lists and objects, can need.
constexpr json_limits_t limits = {.values = 100'000, .containers = 13'000, .members = 60'000};

constexpr char blanks[] = " \t\r\n";

constexpr std::string_view byte_order_mark = "\xef\xbb\xbf";

size_t line_of(std::string_view text, size_t offset) {
    return 1 + static_cast<size_t>(std::count(text.begin(), text.begin() + offset, '\n'));
}

/// @return the offset of the first byte that is a NUL or no UTF-8; the text's size without one
size_t find_bad_byte(std::string_view text) {
    size_t offset = 0;
    while (offset < text.size()) {
        // A character must not be looked for behind the text's end.
        char next[5] = {};
        memcpy(next, text.data() + offset, std::min<size_t>(4, text.size() - offset));
        const size_t size = text_character_size(next);
        if (next[0] == '\0' || size == 0)
            break;
        offset += size;
    }
    return offset;
}

/// Goes through a text for the keys of each object. json-c says nothing of a key that stands there
/// twice, and takes the later value.
class key_scan {
public:
    key_scan(household_reader_t *reader, std::string_view text) : reader_(reader), text_(text) {}

    void run() {
        // Each remark looks for its line.
        while (next_ < text_.size() && reader_->remarks->size() < household_remarks_max)
            step();
    }

private:
    /// json-c refuses what is nested deeper.
    static constexpr size_t depth_max = JSON_TOKENER_DEFAULT_DEPTH;
    /// No good object has as many: whatever comes then is an unknown key or a day's second limit.
    static constexpr size_t keys_max = 16;

    struct object_t {
        std::string_view keys[keys_max];
        size_t count;
    };

    void step() {
        const char c = text_[next_++];
        if (c == '"')
            take_string();
        else if (c == '{' || c == '[')
            open();
        else if ((c == '}' || c == ']') && depth_ > 0)
            --depth_;
        else if (c == '\'')
            object_to_quote();
    }

    /// json-c takes these for quotes.
    void object_to_quote() {
        household_object_to(reader_, nullptr, "line %zu: JSON has no single quotes",
                            line_of(text_, next_));
        next_ = text_.size();
    }

    void open() {
        if (depth_ < depth_max)
            objects_[depth_].count = 0;
        ++depth_;
    }

    void take_string() {
        const size_t first = next_;
        while (next_ < text_.size() && text_[next_] != '"')
            next_ += text_[next_] == '\\' ? 2 : 1;
        if (next_ >= text_.size()) {
            next_ = text_.size();
            return;
        }
        const std::string_view string(text_.data() + first, next_++ - first);
        const size_t behind = text_.find_first_not_of(blanks, next_);
        if (behind < text_.size() && text_[behind] == ':')
            take_key(string);
    }

    void take_key(std::string_view key) {
        if (depth_ == 0 || depth_ > depth_max)
            return;
        object_t &object = objects_[depth_ - 1];
        household_name_t shown = {};
        memcpy(shown.text, key.data(), std::min(key.size(), sizeof(shown.text) - 1));
        const auto end = object.keys + object.count;
        // An escape could hide that two keys are the same, and none of ours needs one.
        if (key.find('\\') != key.npos)
            household_object_to(reader_, nullptr, "line %zu: the key %s has a backslash",
                                line_of(text_, next_), household_quote(shown.text).text);
        else if (std::find(object.keys, end, key) != end)
            household_object_to(reader_, nullptr, "line %zu: the key %s is there twice",
                                line_of(text_, next_), household_quote(shown.text).text);
        else if (object.count < keys_max)
            object.keys[object.count++] = key;
    }

    household_reader_t *reader_;
    std::string_view text_;
    size_t next_ = 0;
    size_t depth_ = 0;
    object_t objects_[depth_max];
};

void object_to_text(household_reader_t *reader, std::string_view text,
                    const json_failure_t &failure) {
    const size_t line = line_of(text, std::min(failure.offset, text.size()));
    const char c = failure.offset < text.size() ? text[failure.offset] : '\0';
    if (failure.error == json_tokener_continue)
        household_object_to(reader, nullptr, "it ends before its object does");
    else if (failure.error == json_tokener_error_depth)
        household_object_to(reader, nullptr, "line %zu: nested too deeply", line);
    else if (c == '/' || c == '#')
        household_object_to(reader, nullptr, "line %zu: JSON has no comments", line);
    else
        household_object_to(reader, nullptr, "line %zu: this is not JSON: %s", line,
                            json_tokener_error_desc(failure.error));
}

/// @return whether json-c may have it; else after an objection
bool is_text(household_reader_t *reader, std::string_view text) {
    const char *objection = text.size() > household_size_limit ? "it is larger than 1 MiB"
                            : text.find_first_not_of(blanks) == text.npos ? "it is empty"
                            : !json_is_within(text.data(), text.size(), limits)
                                ? "there is more in it than a household can need"
                                : nullptr;
    if (objection != nullptr) {
        household_object_to(reader, nullptr, "%s", objection);
        return false;
    }
    const size_t bad = find_bad_byte(text);
    if (bad < text.size())
        household_object_to(reader, nullptr, "line %zu: this is not text in UTF-8",
                            line_of(text, bad));
    return bad == text.size();
}

} // namespace

bool household_parse(household_reader_t *reader, const char *text, size_t size,
                     json_ptr *document) {
    std::string_view view(text, size);
    // Some editors begin a file with it.
    if (view.size() >= byte_order_mark.size() &&
        memcmp(view.data(), byte_order_mark.data(), byte_order_mark.size()) == 0)
        view.remove_prefix(byte_order_mark.size());
    if (!is_text(reader, view))
        return false;
    json_failure_t failure = {json_tokener_success, 0};
    *document = json_parse(view.data(), view.size(), JSON_TOKENER_STRICT, &failure);
    if (*document == nullptr && errno == ENOMEM) {
        reader->is_out_of_memory = true;
        return false;
    }
    if (failure.error != json_tokener_success) {
        object_to_text(reader, view, failure);
        return false;
    }
    key_scan(reader, view).run();
    return true;
}
