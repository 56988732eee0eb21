/// Households that are read while memory runs out: they are whole, or are no household. json-c's
/// own allocations are not among them: 0.16 does not look at all that they return.

#include "format/household.h"
#include "tests/faults/calls.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

using faults::call;

constexpr char document[] = R"({
  "limits": false,
  "applications": [{"number": 305, "name": "video"}, {"number": 306, "name": "games"}],
  "people": [
    {"number": 1, "name": "Mia",
     "devices": [{"mac": "02:00:00:00:00:01", "name": "Mia's tablet"}],
     "limit": {"all": "2h", "weekend": "3h", "friday": 150}, "enforced": false,
     "applications": [{"name": "video", "rule": "45m"}, {"name": "games", "rule": "blocked"}],
     "bedtime": [{"days": "all", "from": "20:30", "to": "07:00"}], "paused": true},
    {"number": 2, "name": "Ben", "limit": 60}]})";

/// A wrong one, whose errors need memory too.
constexpr char wrong[] = R"({"people": [{"number": 1, "name": "Mia", "limt": 1, "limit": 0},
  {"number": 2, "name": "Ben", "applications": [{"name": "vidoe", "rule": "free"}]}]})";

struct reading_t {
    bool is_good;
    household_t household;
    household_remarks_t remarks;
};

/// @return what was read, byte by byte, and the remarks
std::string render(const reading_t &reading) {
    const auto bytes = [](const auto &list) {
        return std::string(reinterpret_cast<const char *>(list.begin()),
                           reinterpret_cast<const char *>(list.end()));
    };
    const household_t &household = reading.household;
    return (household.limits ? "on" : "off") + bytes(household.people) + bytes(household.devices) +
           bytes(household.rules) + bytes(household.apps) + bytes(reading.remarks);
}

/// @return calls of that kind
int read_with(const char *text, const faults::fault &what, reading_t *reading) {
    constexpr household_app_t apps[] = {{310, {"music"}}};
    faults::begin(what);
    reading->is_good =
        household_read(text, strlen(text), apps, &reading->household, &reading->remarks);
    faults::suspend();
    return faults::counted()[static_cast<size_t>(what.which)];
}

void expect_whole_or_none(const char *text) {
    constexpr call which = call::allocation;
    reading_t plain = {};
    const int count = read_with(text, {which, 0, false}, &plain);
    EXPECT_GT(count, 2);
    const std::string expected = render(plain);
    for (int nth = 1; nth <= count; ++nth)
        for (const bool onwards : {false, true}) {
            reading_t reading = {};
            read_with(text, {which, nth, onwards}, &reading);
            EXPECT_LE(reading.is_good, plain.is_good);
            if (reading.is_good) {
                EXPECT_EQ(render(reading), expected) << "allocation " << nth;
            }
        }
}

TEST(FaultsOfHouseholds, LeaveThemWholeOrNone) {
    for (const char *text : {document, wrong})
        expect_whole_or_none(text);
}

} // namespace
