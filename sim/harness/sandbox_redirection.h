#pragma once
/// The sandbox by redirected paths (sandbox.h chooses, sim/preload/redirect.h redirects).

#include <string>
#include <vector>

/// @return whether this process has been started by `sim_enter_redirection`
bool sim_is_redirected();

/// Starts the calling program again, with its paths redirected into a private folder. The calling
/// process stays behind. When the new one has ended, it ends what that has left running, removes
/// the folder, and ends as the new one did.
///
/// @param arguments  the program's own
/// @param keep       as in sim_enter_mount_namespace
/// @param why        what was refused; only then it returns
void sim_enter_redirection(char **arguments, const std::vector<std::string> &keep,
                           std::string *why);

/// Checks that the preload took hold, which a loader may refuse without a word.
[[nodiscard]] bool sim_check_redirection(std::string *why);
