/// A substitute of the router's notification library, for machines that are no router.
///
/// It reports each call as a line of the simulated router's journal and cuts a blocked profile off
/// there. Without a simulated router (UTM_SIM_DIR unset) a call does nothing.

#include "notify/qvutm_notify.h"
#include "notify/simulated_router.h"

namespace {

constexpr uint16_t profile_network_access = 128;
constexpr int32_t block = 0;
constexpr int32_t unblock = 1;

/// @return whether all that the daemon does not know of the record is zero
bool rest_is_zero(const utm_notify_event_t *event) {
    utm_notify_event_t known = {};
    known.type = event->type;
    known.profile_id = event->profile_id;
    known.action = event->action;
    return memcmp(event, &known, sizeof(known)) == 0;
}

bool is_known(const utm_notify_event_t *event) {
    return event->type == profile_network_access &&
           (event->action == block || event->action == unblock);
}

} // namespace

extern "C" {

int send_utm_notify_event(const utm_notify_event_t *event) {
    if (getenv(SIM_ROUTER_VARIABLE) == nullptr)
        return 0;
    char line[160];
    const char *rest = rest_is_zero(event) ? "" : " (bytes that should be zero are not)";
    if (is_known(event)) {
        snprintf(line, sizeof(line), "notify %s profile %d%s\n",
                 event->action == block ? "block" : "unblock", event->profile_id, rest);
        sim_router_set(sim_blocked_fact(event->profile_id).name, event->action == block);
    } else {
        snprintf(line, sizeof(line), "refused notify type %u profile %d action %d%s\n", event->type,
                 event->profile_id, event->action, rest);
    }
    sim_journal_append(line);
    return 0;
}

int send_utm_notify_event_status_changed(int feature, int status) {
    if (getenv(SIM_ROUTER_VARIABLE) == nullptr)
        return 0;
    char line[80];
    snprintf(line, sizeof(line), "notify status_changed %d %d\n", feature, status);
    sim_journal_append(line);
    return 0;
}
}
