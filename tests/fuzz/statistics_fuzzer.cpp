/// Replies of the statistics service: the daemon's reader, which reads blocks, against one that
/// reads lines with `fgets`, and its figures against look-ups by name.
///
/// An input is one reply or several, with a byte 255 between them; one buffer serves them all, as
/// it does in a tick.

#include "tests/fuzz/json_mutator.h"
#include "tests/fuzz/support.h"
#include "usage/statistics_query.h"

#include <cstring>
#include <tuple>
#include <vector>

namespace {

constexpr char between_replies = '\xff';

using figure_t = std::tuple<bool, int32_t, int32_t>;

file_ptr stream_of(std::string *text) {
    return file_ptr(fmemopen(text->data(), text->size(), "r"));
}

/// Reads as C programs do: a line's piece of at most 127 characters at a time, up to its NUL.
std::string read_plainly(FILE *pipe) {
    std::string text;
    char piece[128];
    while (fgets(piece, sizeof(piece), pipe) != nullptr)
        text += piece;
    return text;
}

int32_t number_of(json_object *element, const char *key) {
    json_object *value = nullptr;
    json_object_object_get_ex(element, key, &value);
    // The conversion of what is no number at all is the processor's.
    if (json_object_is_type(value, json_type_double) &&
        json_object_get_double(value) != json_object_get_double(value))
        return 0;
    return json_object_get_int(value);
}

bool has(json_object *element, const char *key) {
    return json_object_object_get_ex(element, key, nullptr) != 0;
}

std::vector<figure_t> figures_by_name(const std::string &text) {
    std::vector<figure_t> figures;
    const json_ptr document(json_tokener_parse(text.c_str()));
    json_object *data = nullptr;
    if (!json_object_is_type(document.get(), json_type_object) ||
        !json_object_object_get_ex(document.get(), "data", &data) ||
        !json_object_is_type(data, json_type_array))
        return figures;
    for (size_t i = 0; i < json_object_array_length(data); ++i) {
        json_object *element = json_object_array_get_idx(data, i);
        json_object *type = nullptr;
        if (!json_object_is_type(element, json_type_object) ||
            !json_object_object_get_ex(element, "type", &type) ||
            !json_object_is_type(type, json_type_string) || !has(element, "app_id") ||
            !has(element, "total_time_usage"))
            continue;
        const std::string name = json_object_get_string(type);
        const bool is_app = name.compare(0, 3, "APP") == 0;
        if (is_app || name.compare(0, 8, "INTERNET") == 0)
            figures.emplace_back(is_app, number_of(element, "app_id"),
                                 number_of(element, "total_time_usage"));
    }
    return figures;
}

std::vector<figure_t> figures_of(const char *text) {
    std::vector<figure_t> figures;
    for (const statistics_figure_t &figure : statistics_figures_t(text))
        figures.emplace_back(figure.kind == figure_kind_t::app, figure.app_id, figure.minutes);
    return figures;
}

void compare(std::string *printed, statistics_reply_t *reply) {
    const file_ptr plain = stream_of(printed);
    const file_ptr pipe = stream_of(printed);
    const std::string expected = read_plainly(plain.get());
    fuzz::check(utm_app_statistics_read(reply, pipe.get()) == 0, "a reply could not be read");
    const char *text = reply->text.get();
    fuzz::check(expected == text, "a reply's text is another one");
    fuzz::check(reply->used == (expected.empty() ? 0 : expected.size() + 1),
                "a reply's size is another one");
    fuzz::check(reply->used <= reply->capacity, "a reply is larger than its buffer");
    fuzz::check(figures_of(text) == figures_by_name(expected), "a reply's figures are others");
}

} // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *bytes, size_t size, size_t most, unsigned seed) {
    return fuzz::mutate_json(bytes, size, most, seed);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    fuzz::reader_t input(bytes, size);
    statistics_reply_t reply = {};
    fuzz::check(utm_app_statistics_create(&reply), "there is no memory");
    do {
        std::string printed = input.text_until(between_replies);
        compare(&printed, &reply);
        utm_app_statistics_clear(&reply);
    } while (!input.is_at_end());
    return 0;
}
