#pragma once
/// The router's notification library, `libqvutm_notify.so`.
///
/// The library is closed and lives on the router; these are its two calls, as the daemon links
/// them. A machine that lacks it builds a substitute of the same name (qvutm_notify.cpp).

#include <cstddef>
#include <cstdint>

/// The event record of `send_utm_notify_event`. The library defines all of it; the daemon knows
/// three fields and sends the rest as zero bytes.
///
/// | offset | size | field      | value                                             |
/// |--------|------|------------|---------------------------------------------------|
/// | 0      | 2    | type       | 128: network access of a whole profile            |
/// | 72     | 4    | profile_id |                                                   |
/// | 80     | 4    | action     | 0 block the profile, 1 unblock it                 |
struct utm_notify_event_t {
    uint16_t type;
    uint8_t unknown0[70];
    int32_t profile_id;
    uint8_t unknown1[4];
    int32_t action;
    uint8_t unknown2[2044];
};

static_assert(sizeof(utm_notify_event_t) == 2128);
static_assert(offsetof(utm_notify_event_t, profile_id) == 72);
static_assert(offsetof(utm_notify_event_t, action) == 80);

extern "C" {

/// Announces an event to the router's services.
/// @param event  an event record of 2128 bytes, read during the call only
int send_utm_notify_event(const utm_notify_event_t *event);

/// Announces that the feature was switched.
/// @param feature  always 1; the library defines what it means
/// @param status   1 switched on, 0 switched off
int send_utm_notify_event_status_changed(int feature, int status);
}
