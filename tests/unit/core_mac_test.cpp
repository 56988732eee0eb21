#include "core/mac.h"

#include <gtest/gtest.h>
#include <string>

namespace {

/// @return the address in its one spelling, "" for a text that is not an address
std::string parsed(const char *text) {
    uint8_t mac[mac_bytes];
    return mac_parse(text, mac) ? mac_text(mac).text : "";
}

TEST(Mac, IsSpeltInOneWay) {
    const uint8_t mac[mac_bytes] = {0x02, 0xfe, 0x80, 0x7f, 0x00, 0x1a};
    EXPECT_STREQ(mac_text(mac).text, "02:FE:80:7F:00:1A");
    EXPECT_STREQ(mac_digits(mac).text, "02FE807F001A");
}

TEST(Mac, IsReadInAnyUsualForm) {
    for (const char *text :
         {"02:fe:80:7f:00:1a", "02-FE-80-7F-00-1A", "02.fe.80.7f.00.1a", "02FE80-7F001A",
          "02fe:807f:001a", "02fe.807F.001a", "02fe807f001a", "02FE807F001A", "02fe80.7f001a"})
        EXPECT_EQ(parsed(text), "02:FE:80:7F:00:1A") << text;
    EXPECT_EQ(parsed("01:23:45:67:89:ab"), "01:23:45:67:89:AB");
    EXPECT_EQ(parsed("CDEF00000000"), "CD:EF:00:00:00:00");
}

TEST(Mac, IsReadInNoOtherForm) {
    for (const char *too_short_or_too_long :
         {"", ":", "0", "02", "02:", "02:fe:80:7f:00", "02:fe:80:7f:00:", "02:fe:80:7f:00:1",
          "02:fe:80:7f:00:1a:", "02:fe:80:7f:00:1a:33", "02fe807f001", "02fe807f001a1",
          "02fe807f001ab1", "2:fe:80:7f:0:1a", "\x11\x11", "::::::"})
        EXPECT_EQ(parsed(too_short_or_too_long), "") << too_short_or_too_long;
    for (const char *odd :
         {"02:fe-80:7f:00:1a", "02::fe:80:7f:00:1a", "02 fe 80 7f 00 1a", "02_fe_80_7f_00_1a",
          "02fe80:7f00:1a", "02fe807f:001a", "0x02fe807f001a", "02:fe:80:7f:00:1g",
          ":02:fe:80:7f:00:1a", " 02:fe:80:7f:00:1a", "02:fe:80:7f:00:1a ",
          "02:fe:80:7f:00:\xff\xff", "@1:00:00:00:00:00"})
        EXPECT_EQ(parsed(odd), "") << odd;
}

} // namespace
