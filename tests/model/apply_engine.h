#pragma once
/// What the router makes of the daemon's command lines and events, kept by a test.

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace model {

struct engine_t {
    bool guard = false;
    std::set<std::pair<std::string, int32_t>> blocked; ///< device, application
    /// Profiles that are cut off, and the devices that they had when it was announced: the router
    /// finds them then. It hears of no device that joins later.
    std::map<int32_t, std::set<std::string>> cut_off;

    /// @param trace  lines of `world::trace`; all but command lines and events is left out
    /// @param statuses  of the command lines, in order: one that failed has done nothing
    void hear(const std::string &trace, const std::vector<int> &statuses);
};

} // namespace model
