#pragma once
/// Looking at running processes from outside, through /proc.

#include <chrono>
#include <set>
#include <string>
#include <sys/types.h>

/// @return what an open descriptor of the process refers to; empty when it is not open
std::string descriptor_target(pid_t pid, int fd);

/// @return the numbers of the process's open descriptors
std::set<int> open_descriptors(pid_t pid);

/// @return the lowest number that the process's next descriptor can get
int next_descriptor(pid_t pid);

/// @return the processes whose parent it is, ended ones that nobody has reaped included
std::set<pid_t> children_of(pid_t pid);

/// @return what each thread of the process and of its children waits for and which signals it has
/// still to take, for the message of a failed test; of what the system does not tell, nothing
std::string activity_of(pid_t pid);

/// @return the processor time that all threads but the main one have used
std::chrono::milliseconds side_threads_time(pid_t pid);

/// Sets the number from which on the process gets no more descriptors.
[[nodiscard]] bool limit_descriptors(pid_t pid, int first_refused);

/// @return the memory that a program has in use, in KiB; of one that an emulator runs, the
/// emulator's own left out
long resident_kib(pid_t pid);
