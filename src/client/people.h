#pragma once
/// People as verbs show them: by the names that the household has for them.

#include "client/output.h"
#include "client/standing.h"
#include "client/verbs.h"
#include "core/vector.h"

#include <cstdint>

/// @return the name that the household has for a person, or null
[[nodiscard]] const char *ctl_name_of_person(const ctl_call &call, int32_t number);

/// Prints a line above what is shown of a person; for somebody who has no name, none.
/// @param is_first  nobody was shown before, from whom a blank line would separate them
void ctl_print_heading(const ctl_call &call, int32_t number, bool is_first);

/// Adds "profile" and "person", which is null for somebody who has no name.
void ctl_add_person(ctl_document *document, const ctl_call &call, int32_t number);

/// The same for a table: two fields.
void ctl_add_person(ctl_csv *csv, const ctl_call &call, int32_t number);

/// Whom a verb is about whose person may be left out: that one, or everybody of the household.
/// @param numbers  out: empty before
/// @return CTL_DONE; CTL_USAGE, after a message, when the household names nobody
[[nodiscard]] ctl_exit ctl_people_meant(const ctl_call &call, plain_vector<int32_t> *numbers);

/// The daemon does not have a person who was meant.
/// @return CTL_REFUSED if it was the only one; CTL_DONE, after a message, if it was one of all
[[nodiscard]] ctl_exit ctl_not_there(const ctl_call &call, int32_t number);

/// Fills a cell with today's limit, or "none".
void ctl_fill_limit(ctl_cell *cell, const ctl_standing &of);

/// Fills a cell with the time that is left, or "-" where nothing cuts off.
void ctl_fill_left(ctl_cell *cell, const ctl_standing &of);

/// Adds a person's figures.
void ctl_add_standing(ctl_document *document, const ctl_standing &of);

/// Prints the document of the one person who was meant; or of all, as an array "people".
/// @param parts  one for each person, with its `number`
/// @param add  adds what a person's document has besides the person
template <typename Part, typename Add>
[[nodiscard]] ctl_exit ctl_print_documents(const ctl_call &call, const plain_vector<Part> &parts,
                                           Add add) {
    ctl_document all;
    json_object *array = call.operands.empty() ? all.add_array("people") : nullptr;
    for (const Part &part : parts) {
        ctl_document one;
        ctl_add_person(&one, call, part.number);
        add(part, &one);
        if (!call.operands.empty())
            return one.print();
        all.append(array, &one);
    }
    return all.print();
}
