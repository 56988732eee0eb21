/// A substitute of the router's notification library, for machines that are no router.
///
/// It reports each call as a line of the simulated router's journal and cuts a blocked profile off
/// there. Without a simulated router (UTM_SIM_DIR unset) a call does nothing.

#include "store/qvutm_notify.h"
#include "router/router_dir.h"

static constexpr uint16_t PROFILE_NETWORK_ACCESS = 128;
static constexpr int32_t BLOCK = 0;
static constexpr int32_t UNBLOCK = 1;

/// @return whether all that the daemon does not know of the record is zero
static bool rest_is_zero(const utm_notify_event_t *event) {
    utm_notify_event_t known = {};
    known.type = event->type;
    known.profile_id = event->profile_id;
    known.action = event->action;
    return memcmp(event, &known, sizeof known) == 0;
}

static bool is_known(const utm_notify_event_t *event) {
    return event->type == PROFILE_NETWORK_ACCESS &&
           (event->action == BLOCK || event->action == UNBLOCK);
}

extern "C" {

int send_utm_notify_event(const utm_notify_event_t *event) {
    if (getenv(SIM_ROUTER_VARIABLE) == nullptr)
        return 0;
    char line[160];
    const char *rest = rest_is_zero(event) ? "" : " (bytes that should be zero are not)";
    if (is_known(event)) {
        snprintf(line, sizeof line, "notify %s profile %d%s\n",
                 event->action == BLOCK ? "block" : "unblock", event->profile_id, rest);
        sim_router_set(sim_blocked_fact(event->profile_id).name, event->action == BLOCK);
    } else {
        snprintf(line, sizeof line, "refused notify type %u profile %d action %d%s\n", event->type,
                 event->profile_id, event->action, rest);
    }
    sim_journal_append(line);
    return 0;
}

int send_utm_notify_event_status_changed(int feature, int status) {
    if (getenv(SIM_ROUTER_VARIABLE) == nullptr)
        return 0;
    char line[80];
    snprintf(line, sizeof line, "notify status_changed %d %d\n", feature, status);
    sim_journal_append(line);
    return 0;
}
}
