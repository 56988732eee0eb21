#include "tests/fuzz/text_checks.h"

#include "tests/fuzz/support.h"

#include <algorithm>
#include <cstring>
#include <json-c/json.h>
#include <set>
#include <vector>

namespace fuzz {

namespace {

// ---- UTF-8 ---------------------------------------------------------------------------------

/// @return how many bytes a character has that begins so; 0 where none does
size_t length_of(uint8_t first) {
    if (first < 0x80)
        return 1;
    if ((first & 0xE0) == 0xC0)
        return 2;
    if ((first & 0xF0) == 0xE0)
        return 3;
    return (first & 0xF8) == 0xF0 ? 4 : 0;
}

/// Decodes a character by its bits.
/// @return its number, or a number that no character has
uint32_t decode(const std::string &text, size_t at, size_t length) {
    constexpr uint32_t none = 0xFFFFFFFF;
    static constexpr uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    if (length == 0 || text.size() - at < length)
        return none;
    uint32_t number = static_cast<uint8_t>(text[at]);
    if (length > 1)
        number &= 0x7FU >> length;
    for (size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<uint8_t>(text[at + i]);
        if ((byte & 0xC0) != 0x80)
            return none;
        number = number << 6 | (byte & 0x3FU);
    }
    return number < least[length] ? none : number;
}

// ---- HTML ----------------------------------------------------------------------------------

/// Reads a page from front to back.
class page_reader_t {
public:
    explicit page_reader_t(const std::string &text) : text_(text) {}

    void read() {
        check(take("<!DOCTYPE html>\n"), "a page without its first line");
        while (at_ < text_.size())
            if (text_[at_] == '<')
                read_tag();
            else
                read_character("<>");
        check(open_.empty(), "a page with an element that is never closed");
    }

private:
    bool take(const char *expected) {
        if (text_.compare(at_, strlen(expected), expected) != 0)
            return false;
        at_ += strlen(expected);
        return true;
    }

    std::string name() {
        const size_t start = at_;
        while (at_ < text_.size() &&
               (isalnum(static_cast<unsigned char>(text_[at_])) != 0 || text_[at_] == '-'))
            ++at_;
        check(at_ > start, "a page with a tag or an attribute that has no name");
        return text_.substr(start, at_ - start);
    }

    /// @param forbidden  characters that may not stand for themselves here
    void read_character(const char *forbidden) {
        static constexpr const char *entities[] = {"&amp;", "&lt;", "&gt;", "&quot;", "&#39;"};
        if (text_[at_] == '&') {
            check(std::any_of(std::begin(entities), std::end(entities),
                              [this](const char *entity) { return take(entity); }),
                  "a page with an unknown entity");
            return;
        }
        check(strchr(forbidden, text_[at_]) == nullptr, "a page with markup in its text");
        ++at_;
    }

    void read_value() {
        check(take("=\""), "a page with an attribute that is not quoted");
        while (at_ < text_.size() && text_[at_] != '"')
            read_character("<>\"");
        check(take("\""), "a page with an attribute that has no end");
    }

    /// @return whether the tag closes its element too
    bool read_attributes() {
        std::set<std::string> seen;
        while (take(" ")) {
            const std::string attribute = name();
            check(seen.insert(attribute).second, "a page with an attribute that is there twice");
            check(attribute != "src" && attribute != "href" && attribute.compare(0, 2, "on") != 0,
                  "a page that loads or runs something");
            read_value();
        }
        const bool is_closed = take("/");
        check(take(">"), "a page with a tag that has no end");
        return is_closed;
    }

    void read_tag() {
        if (take("</")) {
            check(!open_.empty() && name() == open_.back() && take(">"),
                  "a page with an element that is closed elsewhere");
            open_.pop_back();
            return;
        }
        ++at_;
        const std::string element = name();
        check(element != "script" && element != "link" && element != "img",
              "a page that loads or runs something");
        if (read_attributes() || element == "meta")
            return;
        open_.push_back(element);
        if (element == "style")
            at_ = std::min(text_.find("</style>", at_), text_.size());
    }

    const std::string &text_;
    size_t at_ = 0;
    std::vector<std::string> open_;
};

} // namespace

void check_clean(const std::string &text) {
    for (size_t at = 0; at < text.size();) {
        const size_t length = length_of(static_cast<uint8_t>(text[at]));
        const uint32_t character = decode(text, at, length);
        check(character < 0x110000 && (character < 0xD800 || character > 0xDFFF),
              "text that is no UTF-8");
        check(character == '\n' || (character >= 0x20 && (character < 0x7F || character > 0x9F)),
              "text with a control character");
        at += length;
    }
}

void check_json(const std::string &text) {
    json_tokener *tokener = json_tokener_new();
    json_tokener_set_flags(tokener, JSON_TOKENER_STRICT | JSON_TOKENER_VALIDATE_UTF8);
    json_object *document =
        json_tokener_parse_ex(tokener, text.c_str(), static_cast<int>(text.size() + 1));
    check(document != nullptr && json_tokener_get_error(tokener) == json_tokener_success,
          "JSON that does not parse");
    json_object_put(document);
    json_tokener_free(tokener);
}

void check_html(const std::string &text) {
    check_clean(text);
    page_reader_t(text).read();
}

} // namespace fuzz
