#include "sim/harness/files.h"

#include <cstdio>
#include <memory>
#include <thread>

using std::chrono::steady_clock;

namespace {
struct close_file {
    void operator()(FILE *file) const { fclose(file); }
};
using file_owner = std::unique_ptr<FILE, close_file>;
} // namespace

std::string sim_read_file(const std::string &path) {
    std::string content;
    file_owner file(fopen(path.c_str(), "re"));
    if (!file)
        return content;
    char chunk[4096];
    while (size_t got = fread(chunk, 1, sizeof(chunk), file.get()))
        content.append(chunk, got);
    return content;
}

bool sim_write_file(const std::string &path, const std::string &content) {
    std::string draft = path + ".draft";
    file_owner file(fopen(draft.c_str(), "we"));
    if (!file)
        return false;
    bool written = fwrite(content.data(), 1, content.size(), file.get()) == content.size();
    written = fclose(file.release()) == 0 && written;
    return written && rename(draft.c_str(), path.c_str()) == 0;
}

std::vector<std::string> sim_split_lines(const std::string &text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

std::vector<std::string> sim_journal(const std::string &router_dir) {
    return sim_split_lines(sim_read_file(router_dir + "/journal"));
}

bool sim_wait_for(const std::function<bool()> &condition, sim_timeout timeout) {
    auto deadline = steady_clock::now() + timeout.limit;
    while (!condition()) {
        if (steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}
