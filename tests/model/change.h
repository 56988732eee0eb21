#pragma once
/// What somebody else does to the usage files between two operations of the daemon.

#include "tests/model/state.h"

namespace model {

enum class deed_t { none, write_file, remove_file, remove_folder, make_folder };

struct change_t {
    deed_t deed = deed_t::none;
    std::string path;    ///< of a file
    document_t document; ///< what is written
};

/// Files that may be written, if their folder is there.
const std::vector<std::string> &file_paths();
/// Places where no file can be.
const std::vector<std::string> &bad_paths();

// On the disk (disk.cpp)
/// Makes the folder for other files and removes every file.
void clear_disk();
void change_disk(const change_t &change);
/// @return the texts of the files at `file_paths()`, those that are there
std::map<std::string, std::string> files_on_disk();

} // namespace model
