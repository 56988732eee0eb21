/// docs/usage-file.md is correct: its example is a file that the daemon reads and writes.

#include "persist/import.h"

#include "tests/lib/render.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

class UsageFileDocument : public usage_file_fixture {
protected:
    /// @return the document's only block of JSON
    static std::string example() {
        const std::string page = read_file(UTM_BUILD_DIR "/docs/usage-file.md");
        const std::string opening = "```json\n";
        const size_t start = page.find(opening);
        EXPECT_NE(start, std::string::npos);
        EXPECT_EQ(page.find(opening, start + 1), std::string::npos);
        const size_t text = start + opening.size();
        return page.substr(text, page.find("```", text) - text);
    }

    /// No text of the example contains a blank.
    static std::string compact(std::string text) {
        std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
        return text;
    }
};

TEST_F(UsageFileDocument, ShowsAnExampleThatTheDaemonReads) {
    ASSERT_EQ(import_text(example()), 0);
    EXPECT_EQ(world::render_store(),
              "profile 3: devices 0 [], enabled 0, limit 1440 + 0, used 42/130/0, blocked 0, "
              "collected +0, apps 1, policy none\n"
              "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n"
              "  app 305: used 5/21/0, blocked 0, days [1:4 2:8 3:9] next 4\n"
              "router: apps 1, collected +0\n"
              "  app 305: used 6/25/0, blocked 0, days [1:5 2:9 3:11] next 4\n");
    const std::string exported = export_text();
    ASSERT_EQ(import_text(exported), 0);
    EXPECT_EQ(export_text(), exported);
}

TEST_F(UsageFileDocument, ShowsAnExampleThatTheDaemonWrites) {
    usage_file::app_t app = {305, 5, 21, 0, 4};
    app.ring[1] = 4;
    app.ring[2] = 8;
    app.ring[3] = 9;
    make(usage_file::profile_t{3,
                               42,
                               130,
                               0,
                               {app},
                               {120, 60, 60, 60, 60, 60, 120},
                               15,
                               0,
                               {"0A:1B:2C:3D:4E:5F"},
                               usage_file::policy_t{7, {{305, 1, 30}}}});
    usage_file::app_t router = {305, 6, 25, 0, 4};
    router.ring[1] = 5;
    router.ring[2] = 9;
    router.ring[3] = 11;
    make_router_app(router);
    EXPECT_EQ(export_text(), compact(example()));
}

} // namespace
