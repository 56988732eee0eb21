#pragma once
/// The order in which the daemon takes its locks and calls the outside.
///
/// The linker replaces the calls that lock, read, write, sort and ask the machine with fakes. Each
/// does what it always does; while a trace is being made it also leaves a word there, and a lock
/// a pair of brackets. An export reads
///
///     store() file(clock store() write flush rename) log
///
/// so one comparison says what happens under which lock, and in which order. A lock that is given
/// back before one that was taken after it names itself: ")store".
///
/// | word                          | what                                                     |
/// |-------------------------------|----------------------------------------------------------|
/// | store                         | utm_app_config_mutex                                     |
/// | file                          | utm_app_export_import_mutex                              |
/// | debug                         | utm_app_debug_mutex                                      |
/// | interval-read interval-write  | utm_export_interval_rwlock                               |
/// | clock uptime                  | gettimeofday, sysinfo                                    |
/// | parse empty write look        | json_tokener_parse_ex, ftruncate, write, access, not the log's
/// | | flush rename                  | fsync, renameat                                          |
/// | log                           | a line is written to the log                             |
/// | sort                          | qsort                                                    |
/// | request reply                 | send, by the client and by the daemon                    |
/// | query reap run event status   | popen, pclose, system, the two notification calls        |

#include <functional>
#include <string>

namespace call_trace {

/// @return what this thread calls while it acts
std::string of(const std::function<void()> &act);

/// The same, and does something right before each call. What that calls leaves no trace.
/// @param before_each  gets the trace's next word, such as "store(", ")" or "clock"
std::string of(const std::function<void()> &act,
               const std::function<void(const std::string &word)> &before_each);

/// For the fakes: adds a word if this thread is making a trace.
void note(const char *word);
/// The same for a write to a descriptor: "log" or "write".
void note_write(int fd);

} // namespace call_trace
