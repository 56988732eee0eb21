/// What a server answers the client: whatever comes, and in whatever pieces, the client ends with
/// one of its statuses, and what it has printed by then is clean text, a JSON document or a page.
///
/// An input is a verb, its operands, up to four more words, and what is answered at each
/// connection.

#include "client/arguments.h"
#include "client/verbs.h"
#include "tests/fuzz/client_output.h"
#include "tests/fuzz/text_checks.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <clocale>
#include <csignal>
#include <cstring>
#include <getopt.h>
#include <memory>
#include <poll.h>
#include <sys/socket.h>
#include <utility>
#include <vector>

int utm_appctl_main(int argc, char **argv);

namespace {

/// Stands for the connection; no descriptor of this number is ever open.
constexpr int server_fd = 1'000'000;
constexpr char names_path[] = "/tmp/fuzz_names";
constexpr char usage_path[] = "/tmp/fuzz_usage.json";
constexpr char usage_text[] =
    R"({"user_profile_list":[{"user_profile_id":1,"daily_used":5,"weekly_used":0,)"
    R"("monthly_used":0,"app_stat_list":[]}],"timestamp":1772625600,"global_stat":[]})";

/// The input that is being run, and how far the client has read the answer.
struct server_t {
    fuzz::reader_t *input;
    std::string answer;
    size_t given;
};

server_t server = {};

// ---- Answers -------------------------------------------------------------------------------

int32_t value_of(uint8_t byte) {
    static constexpr int32_t odd[] = {0,  1,  2,    7,    12,        59,        60,        305,
                                      -1, -7, 1440, 1441, INT32_MAX, INT32_MIN, 10'000'000};
    return byte < 192 ? odd[byte % std::size(odd)] : byte;
}

/// @return a reply whose fields are values that two bytes choose
std::string reply_of(uint8_t status, uint8_t first, uint8_t stride) {
    std::array<int32_t, UTM_APP_CONFIG_REPLY_SIZE / sizeof(int32_t)> words;
    for (size_t i = 0; i < words.size(); ++i)
        words[i] = value_of(static_cast<uint8_t>(first + i * stride));
    std::string bytes(reinterpret_cast<const char *>(words.data()), UTM_APP_CONFIG_REPLY_SIZE);
    bytes[0] = static_cast<char>(status);
    return bytes;
}

/// A list of many entries comes from one record, so that charts and tables get long.
void add_replies(std::string *answer, uint8_t kind, fuzz::reader_t *input) {
    static constexpr uint8_t statuses[] = {
        UTM_APP_CONFIG_STATUS_OK,   UTM_APP_CONFIG_STATUS_DATA,
        UTM_APP_CONFIG_STATUS_OK,   UTM_APP_CONFIG_STATUS_FAIL,
        UTM_APP_CONFIG_STATUS_DATA, UTM_APP_CONFIG_STATUS_NOT_LOADED,
        UTM_APP_CONFIG_STATUS_DATA, 3};
    const uint8_t status = statuses[kind % std::size(statuses)];
    const uint8_t first = input->byte();
    const uint8_t stride = input->byte();
    const size_t count = status == UTM_APP_CONFIG_STATUS_DATA ? 1U + input->byte() % 64 : size_t{1};
    for (size_t i = 0; i < count; ++i)
        *answer += reply_of(status, static_cast<uint8_t>(first + i), stride);
}

std::string next_answer(fuzz::reader_t *input) {
    std::string answer;
    // The upper bits say whether more follows, and whether the last reply is cut.
    for (uint8_t kind = 0x80; (kind & 0x80) != 0 && !input->is_at_end();) {
        kind = input->byte();
        add_replies(&answer, kind, input);
        if ((kind & 0x60) == 0x60)
            answer.resize(answer.size() - input->byte() % UTM_APP_CONFIG_REPLY_SIZE);
    }
    return answer;
}

/// A daemon that is asked for a file writes one.
void serve(const void *bytes, size_t size) {
    utm_app_config_cmd request;
    fuzz::check(size == sizeof(request), "a request of another size");
    memcpy(&request, bytes, sizeof(request));
    const utm_app_config_path_text path = utm_app_config_path(request);
    if (request.type == UTM_APP_CONFIG_EXPORT_STATISTICS &&
        strncmp(path.text, "/tmp/utm_appctl.", strlen("/tmp/utm_appctl.")) == 0)
        fuzz::input_file_t(path.text).write(usage_text);
}

// ---- Command lines -------------------------------------------------------------------------

constexpr const char *operands[] = {
    "1",        "2",         "-1",  "0",        "2147483647",        "90m",
    "1h30m",    "on",        "off", "monday",   "02:00:00:00:00:1a", "305=block",
    "12=45m",   "12=remove", "5",   names_path, usage_path,          "/nowhere",
    "video=1m", "",          "-",   "1441",     "AABBCCDDEEFF",      "x\x1b[2J",
};

constexpr const char *options[] = {
    "--json",    "--ascii",         "--names", names_path, "--apps",    "--day",
    "3",         "--week",          "1",       "--month",  "--history", "--days",
    "--weeks",   "--history=weeks", "-t",      "30",       "--json",    "--help",
    "--version", "--socket",        "-s",      "/x",       "--",        "--day=30",
    "-j",        "--history=days",  "-n",      "--week=3", "--apps",    "--bogus",
};

/// @return "utm_appctl", a verb's words, as many operands as it wants, and a few words more
std::vector<std::string> words_of(fuzz::reader_t *input) {
    const ctl_verb verb = ctl_verbs().at(input->byte() % ctl_verbs().size());
    std::vector<std::string> words = {"utm_appctl", verb.noun};
    if (verb.word != nullptr)
        words.emplace_back(verb.word);
    const ctl_bounds bounds = ctl_bounds_of(verb.synopsis);
    const size_t more = input->byte();
    const size_t count = std::min(bounds.most, bounds.least + more % 16 / 8);
    for (size_t i = 0; i < count; ++i)
        words.emplace_back(operands[input->byte() % std::size(operands)]);
    for (size_t i = 0; i < more / 16 % 5; ++i)
        words.emplace_back(options[input->byte() % std::size(options)]);
    return words;
}

/// Keeps what a report does to signals from libFuzzer, which knows what to do with them.
class signals_t {
public:
    signals_t() { each(nullptr); }
    ~signals_t() { each(&actions_); }
    signals_t(const signals_t &) = delete;
    signals_t &operator=(const signals_t &) = delete;

private:
    using actions_t = std::array<struct sigaction, 4>;

    void each(const actions_t *restored) {
        static constexpr int numbers[] = {SIGHUP, SIGINT, SIGTERM, SIGPIPE};
        for (size_t i = 0; i < std::size(numbers); ++i)
            sigaction(numbers[i], restored == nullptr ? nullptr : &(*restored)[i],
                      restored == nullptr ? &actions_[i] : nullptr);
    }

    actions_t actions_ = {};
};

int run_client(std::vector<std::string> words, std::string *printed) {
    std::vector<char *> arguments;
    for (std::string &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const signals_t signals;
    fuzz::memory_stream_t out;
    FILE *before = std::exchange(stdout, out.get());
    optind = 0;
    const int status = utm_appctl_main(static_cast<int>(words.size()), arguments.data());
    stdout = before;
    *printed = out.text();
    return status;
}

} // namespace

// ---- What the linker puts in place of these calls ------------------------------------------

extern "C" {

int __wrap_socket(int, int, int) {
    return server_fd;
}

int __wrap_setsockopt(int, int, int, const void *, socklen_t) {
    return 0;
}

int __wrap_connect(int, const sockaddr *, socklen_t) {
    server.answer = next_answer(server.input);
    server.given = 0;
    return 0;
}

int __wrap_poll(pollfd *descriptors, nfds_t, int) {
    descriptors[0].revents = POLLIN;
    return 1;
}

ssize_t __wrap_send(int, const void *bytes, size_t size, int) {
    serve(bytes, size);
    return static_cast<ssize_t>(size);
}

/// Replies come in pieces of a hundred bytes less than their size.
ssize_t __wrap_recv(int, void *bytes, size_t size, int) {
    const size_t piece =
        std::min({size, server.answer.size() - server.given, UTM_APP_CONFIG_REPLY_SIZE - 100});
    memcpy(bytes, server.answer.data() + server.given, piece);
    server.given += piece;
    return static_cast<ssize_t>(piece);
}

} // extern "C"

/// Lines of comma-separated values end with two characters, and a completion's words are apart from
/// their help by a tab.
static std::string without_separators(const std::string &text, bool is_completion) {
    std::string plain;
    for (size_t at = 0; at < text.size(); ++at)
        if (text.compare(at, 2, "\r\n") != 0 && !(is_completion && text[at] == '\t'))
            plain += text[at];
    return plain;
}

extern "C" int LLVMFuzzerInitialize(int *, char ***arguments) {
    fuzz::enter_sandbox(*arguments);
    fuzz::silence_messages();
    setenv("TZ", "UTC0", 1);
    setenv("LC_ALL", "C.UTF-8", 1);
    tzset();
    fuzz::input_file_t(names_path).write("305 <b>&\"video\"\n12 \xd7\xa9\xd7\x9c\n-1 minus\n");
    fuzz::input_file_t(usage_path).write(usage_text);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    fuzz::reader_t input(bytes, size);
    server = {&input, {}, 0};
    std::string printed;
    const std::vector<std::string> words = words_of(&input);
    const bool is_completion = std::find(words.begin(), words.end(), "completion") != words.end();
    const int status = run_client(words, &printed);
    fuzz::check(status >= CTL_DONE && status <= CTL_BROKEN, "an unknown exit status");
    fuzz::check_clean(without_separators(printed, is_completion));
    if (printed.compare(0, 1, "{") == 0)
        fuzz::check_json(printed);
    else if (printed.compare(0, 1, "<") == 0 && status == CTL_DONE)
        fuzz::check_html(printed);
    return 0;
}
