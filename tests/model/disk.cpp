#include "tests/model/rules.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace model {

namespace {

std::filesystem::path own_folder() {
    return std::filesystem::path(own_path).parent_path();
}

} // namespace

void clear_disk() {
    std::filesystem::remove_all(own_folder());
    std::filesystem::remove_all(other_folder);
    std::filesystem::create_directory(other_folder);
}

void change_disk(const change_t &change) {
    if (change.deed == deed_t::write_file)
        std::ofstream(change.path, std::ios::binary) << text_of(change.document);
    if (change.deed == deed_t::remove_file)
        std::filesystem::remove(change.path);
    if (change.deed == deed_t::remove_folder)
        std::filesystem::remove_all(own_folder());
    if (change.deed == deed_t::make_folder)
        std::filesystem::create_directory(own_folder());
}

std::map<std::string, std::string> files_on_disk() {
    std::map<std::string, std::string> texts;
    for (const std::string &path : file_paths())
        if (std::ifstream file(path, std::ios::binary); file.is_open()) {
            std::ostringstream text;
            text << file.rdbuf();
            texts[path] = text.str();
        }
    return texts;
}

} // namespace model
