#include "client/rpcd.h"

#include "client/output.h"
#include "core/json.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace {

/// The longest text of arguments. A pipe has room for more, so nobody has to wait.
constexpr size_t text_max = 4096;

/// An object, and nothing in it.
constexpr int depth_max = 2;

enum class rpcd_kind { person, minutes, flag };

struct rpcd_argument {
    const char *name;
    rpcd_kind kind;
    const char *option; ///< of a flag that is true
    bool is_needed;
};

constexpr size_t arguments_max = 3;

struct rpcd_method {
    const char *name;
    const char *verb[2];
    const char *option; ///< always given
    rpcd_argument arguments[arguments_max];
};

constexpr rpcd_argument a_person = {"person", rpcd_kind::person, nullptr, true};
constexpr rpcd_argument a_person_or_all = {"person", rpcd_kind::person, nullptr, false};
constexpr rpcd_argument some_minutes = {"minutes", rpcd_kind::minutes, nullptr, true};

constexpr rpcd_argument a_flag(const char *name, const char *option) {
    return {name, rpcd_kind::flag, option, false};
}

// Those that only look come first: the package's ACLs tell them from the others.
constexpr rpcd_method methods[] = {
    {"status", {"status"}, nullptr, {}},
    {"people", {"people"}, nullptr, {}},
    {"usage", {"usage"}, nullptr, {a_person_or_all}},
    {"history", {"usage"}, "--history", {a_person, a_flag("weeks", "--weeks")}},
    {"extend", {"extend", "add"}, nullptr, {a_person, some_minutes}},
    {"apply",
     {"apply"},
     nullptr,
     {a_flag("dry_run", "--dry-run"), a_flag("prune", "--prune"), a_flag("repair", "--repair")}},
};

/// Less than the thirty seconds after which rpcd kills what does not answer.
constexpr const char *every_call[] = {"utm_appctl", "--json", "--timeout", "25"};

/// What uhttpd adds to the arguments: who is logged in. rpcd has looked at it.
constexpr char session_key[] = "ubus_rpc_session";

const rpcd_method *find_method(const char *name) {
    for (const rpcd_method &method : methods)
        if (strcmp(method.name, name) == 0)
            return &method;
    return nullptr;
}

bool has_argument(const rpcd_method &method, const char *name) {
    for (const rpcd_argument &argument : method.arguments)
        if (argument.name != nullptr && strcmp(argument.name, name) == 0)
            return true;
    return false;
}

/// No call has more words than there is room for: four, an option for each argument and one, two
/// dashes, two words and three operands.
void add_word(ctl_rpcd_line *line, const char *word) {
    line->words[line->count++] = const_cast<char *>(word);
}

/// @return whether the text ends where its NUL is, and is there
bool is_whole_text(json_object *value) {
    const size_t length = static_cast<size_t>(json_object_get_string_len(value));
    return length > 0 && strlen(json_object_get_string(value)) == length;
}

/// Says what is wrong with an argument, if anything is.
ctl_exit check_argument(const rpcd_argument &argument, json_object *value) {
    const json_type type = json_object_get_type(value);
    if (argument.kind == rpcd_kind::flag)
        return type == json_type_boolean
                   ? CTL_DONE
                   : ctl_fail(CTL_USAGE, "\"%s\" is neither true nor false", argument.name);
    if (type == json_type_int || (type == json_type_string && is_whole_text(value)))
        return CTL_DONE;
    return ctl_fail(CTL_USAGE, "\"%s\" is no %s", argument.name,
                    argument.kind == rpcd_kind::person ? "name or number of a person"
                                                       : "number of minutes, nor \"1h30m\"");
}

ctl_exit check_arguments(const rpcd_method &method, json_object *arguments) {
    json_object_iterator at = json_object_iter_begin(arguments);
    const json_object_iterator end = json_object_iter_end(arguments);
    for (; json_object_iter_equal(&at, &end) == 0; json_object_iter_next(&at)) {
        const char *name = json_object_iter_peek_name(&at);
        if (strcmp(name, session_key) != 0 && !has_argument(method, name))
            return ctl_fail(CTL_USAGE, "\"%s\" is no argument of \"%s\"", name, method.name);
    }
    for (const rpcd_argument &argument : method.arguments) {
        json_object *value = nullptr;
        if (argument.name == nullptr)
            break;
        if (json_object_object_get_ex(arguments, argument.name, &value)) {
            const ctl_exit status = check_argument(argument, value);
            if (status != CTL_DONE)
                return status;
        } else if (argument.is_needed) {
            return ctl_fail(CTL_USAGE, "\"%s\" is missing", argument.name);
        }
    }
    return CTL_DONE;
}

/// Makes checked arguments into words. Behind the two dashes nothing is an option, whatever a
/// person is called.
void add_words(const rpcd_method &method, ctl_rpcd_line *line) {
    for (const char *word : every_call)
        add_word(line, word);
    if (method.option != nullptr)
        add_word(line, method.option);
    for (const rpcd_argument &argument : method.arguments)
        if (argument.kind == rpcd_kind::flag && json_object_get_boolean(json_object_object_get(
                                                    line->arguments.get(), argument.name)) != 0)
            add_word(line, argument.option);
    add_word(line, "--");
    for (const char *word : method.verb)
        if (word != nullptr)
            add_word(line, word);
    for (const rpcd_argument &argument : method.arguments) {
        json_object *value = nullptr;
        if (argument.name != nullptr && argument.kind != rpcd_kind::flag &&
            json_object_object_get_ex(line->arguments.get(), argument.name, &value))
            add_word(line, json_object_get_string(value));
    }
}

/// @return null when the text is not just a JSON object of plain values
json_ptr parse_arguments(const char *text, size_t length) {
    const std::unique_ptr<json_tokener, decltype(&json_tokener_free)> tokener(
        json_tokener_new_ex(depth_max), json_tokener_free);
    if (tokener == nullptr)
        return nullptr;
    json_tokener_set_flags(tokener.get(), JSON_TOKENER_STRICT | JSON_TOKENER_VALIDATE_UTF8);
    json_ptr document(json_tokener_parse_ex(tokener.get(), text, static_cast<int>(length)));
    const bool is_whole = json_tokener_get_error(tokener.get()) == json_tokener_success &&
                          json_tokener_get_parse_end(tokener.get()) == length;
    if (!is_whole || json_object_get_type(document.get()) != json_type_object)
        return nullptr;
    return document;
}

/// A value of each argument shows rpcd's clients its type.
json_object *example_of(rpcd_kind kind) {
    switch (kind) {
    case rpcd_kind::person:
        return json_object_new_string("Mia");
    case rpcd_kind::minutes:
        return json_object_new_string("30m");
    case rpcd_kind::flag:
        break;
    }
    return json_object_new_boolean(1);
}

ctl_exit list_methods() {
    ctl_document document;
    for (const rpcd_method &method : methods) {
        ctl_document arguments;
        for (const rpcd_argument &argument : method.arguments)
            if (argument.name != nullptr)
                arguments.add(argument.name, example_of(argument.kind));
        document.add_document(method.name, &arguments);
    }
    return document.print();
}

/// Reads standard input to its end.
/// @param text  room for `text_max` bytes
ctl_exit read_input(char *text, size_t *length) {
    *length = 0;
    while (*length < text_max) {
        const ssize_t got = read(STDIN_FILENO, text + *length, text_max - *length);
        if (got == 0)
            break;
        if (got < 0 && errno != EINTR)
            return ctl_fail(CTL_USAGE, "the arguments cannot be read (%s)", strerror(errno));
        if (got > 0)
            *length += static_cast<size_t>(got);
    }
    if (*length == text_max)
        return ctl_fail(CTL_USAGE, "the arguments are too long");
    while (*length > 0 && (text[*length - 1] == '\n' || text[*length - 1] == ' '))
        --*length;
    return CTL_DONE;
}

} // namespace

bool ctl_is_rpcd(int argc, char **argv) {
    return argc > 1 && strcmp(argv[1], "rpcd") == 0;
}

ctl_exit ctl_rpcd_call(const char *method, const char *text, size_t length, ctl_rpcd_line *line) {
    const rpcd_method *found = find_method(method);
    if (found == nullptr)
        return ctl_fail(CTL_USAGE, "\"%s\" is no method", method);
    line->arguments = parse_arguments(text, length);
    if (line->arguments == nullptr)
        return ctl_fail(CTL_USAGE, "the arguments are no JSON object of texts and numbers");
    const ctl_exit status = check_arguments(*found, line->arguments.get());
    if (status == CTL_DONE)
        add_words(*found, line);
    return status;
}

ctl_exit ctl_rpcd(int argc, char **argv, ctl_rpcd_line *line) {
    if (argc == 3 && strcmp(argv[2], "list") == 0)
        return list_methods();
    if (argc != 4 || strcmp(argv[2], "call") != 0)
        return ctl_fail(CTL_USAGE, "rpcd is followed by \"list\", or by \"call\" and a method");
    char text[text_max];
    size_t length = 0;
    const ctl_exit status = read_input(text, &length);
    return status == CTL_DONE ? ctl_rpcd_call(argv[3], text, length, line) : status;
}
