#pragma once
/// What `--help` shows, made from the table of verbs.

#include "client/verbs.h"

#include <cstdio>

/// Writes how to use everything.
void ctl_write_help(FILE *out);

/// Writes how to use the verbs of one noun.
void ctl_write_noun_help(FILE *out, const char *noun);

/// Writes how to use one verb, with its options.
void ctl_write_verb_help(FILE *out, const ctl_verb &verb);
