#pragma once
/// The household file, as verbs need it: names of people and applications.

#include "client/message.h"
#include "format/household.h"

/// Where the household file is: as told by --household, else by UTM_APPCTL_HOUSEHOLD in the
/// environment, else the default.
struct ctl_household_place {
    const char *path;
    bool is_told; ///< by --household: it has to exist
};

[[nodiscard]] ctl_household_place ctl_household_place_of(const char *told);

/// Reads the household for names alone. A file with errors is reported in a line and counts as
/// empty: who wants to give a bonus should not have to mend it first. A file that nobody named by
/// --household and that does not exist is an empty household. Whatever becomes of the file, the
/// names file's names are there.
/// @param names_path  of the names file, or null for the default; see client/names.h
/// @return CTL_DONE, or the status to end with, after a message: a file that was named and cannot
///         be read, or no memory
[[nodiscard]] ctl_exit ctl_read_names_of_household(const char *told, const char *names_path,
                                                   household_t *household);

/// Reads the household to make it so: every error and warning is reported. The file has to exist.
/// @param path  "-" is standard input
[[nodiscard]] ctl_exit ctl_read_whole_household(const char *path, const char *names_path,
                                                household_t *household);

/// What a person goes by: their name, or else their number.
struct ctl_person_text {
    char text[household_name_size];
};

[[nodiscard]] ctl_person_text ctl_person_name(const household_t &household, int32_t number);

/// What an application goes by: its name, or else its number.
[[nodiscard]] household_name_t ctl_app_title(const household_t &household, int32_t app_id);

/// Reads a person's name or number, as an operand has it.
/// @param number  out: also of somebody whom the household does not name
/// @return false after a message: the text is neither, with "did you mean"
[[nodiscard]] bool ctl_read_person(const household_t &household, const char *text, int32_t *number);
