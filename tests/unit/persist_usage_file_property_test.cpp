/// What holds for exports and imports of any store: random stores, with fixed seeds.

#include "persist/import.h"

#include "tests/lib/render.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

using usage_file::app_t;
using usage_file::document_t;
using usage_file::profile_t;

class random_t {
public:
    explicit random_t(uint32_t seed) : engine_(seed) {}

    int32_t below(int32_t end) {
        return static_cast<int32_t>(engine_() % static_cast<uint32_t>(end));
    }

    /// A figure: mostly a plausible one, now and then any number at all.
    int32_t figure() {
        switch (below(8)) {
        case 0:
            return static_cast<int32_t>(engine_());
        case 1:
            return below(2) == 0 ? std::numeric_limits<int32_t>::max()
                                 : std::numeric_limits<int32_t>::min();
        case 2:
            return 0;
        default:
            return below(1441);
        }
    }

    app_t app() {
        app_t made = {figure(), figure(), figure(), figure(), below(30)};
        for (int32_t &slot : made.ring)
            slot = figure();
        return made;
    }

    std::vector<app_t> apps() {
        std::vector<app_t> made(static_cast<size_t>(below(6)));
        for (app_t &one : made)
            one = app();
        return made;
    }

    profile_t profile(int32_t id) {
        profile_t made = {id, figure(), figure(), figure(), apps()};
        for (int32_t &limit : made.weekdays)
            limit = below(1441);
        made.extend = figure();
        made.blocked = below(2);
        for (int32_t n = below(4); n > 0; --n)
            made.devices.push_back(mac(n));
        if (below(2) == 0)
            made.policy = policy(id, made.apps);
        return made;
    }

    document_t document() {
        document_t made = {{}, world::default_now, apps()};
        for (int32_t n = below(5), id = below(1000); n > 0; --n)
            made.profiles.push_back(profile(id += 1 + below(100)));
        return made;
    }

private:
    std::string mac(int32_t last) {
        char text[64];
        snprintf(text, sizeof(text), "%02X:%02X:%02X:%02X:%02X:%02X", below(256), below(256),
                 below(256), below(256), below(256), last);
        return text;
    }

    /// Rules for some of the applications and for others; no application has two.
    usage_file::policy_t policy(int32_t profile_id, const std::vector<app_t> &apps) {
        usage_file::policy_t made = {profile_id + 1, {}};
        for (const app_t &app : apps)
            if (below(2) == 0 &&
                std::none_of(made.rules.begin(), made.rules.end(),
                             [&](const auto &rule) { return rule.app_id == app.id; }))
                made.rules.push_back({app.id, 1 + below(2), below(1441)});
        return made;
    }

    std::mt19937 engine_;
};

class UsageFileProperty : public usage_file_fixture {
protected:
    /// Runs a step for many random stores, each with an empty store before it.
    static void for_random_documents(const std::function<void(random_t &, document_t &)> &step) {
        for (uint32_t seed = 1; seed <= 300; ++seed) {
            SCOPED_TRACE(seed);
            random_t random(seed);
            document_t document = random.document();
            empty_store();
            forget_log();
            step(random, document);
            if (HasFailure())
                return;
        }
    }

    /// What a file keeps of a profile that no store knows.
    static document_t without_settings(const document_t &document) {
        document_t bare = document;
        for (profile_t &profile : bare.profiles)
            profile = {profile.id, profile.daily, profile.weekly, profile.monthly, profile.apps};
        return bare;
    }
};

TEST_F(UsageFileProperty, AnExportIsWhatASecondWriterWrites) {
    for_random_documents([](random_t &, document_t &document) {
        make(document);
        EXPECT_EQ(export_text(), usage_file::text(document));
    });
}

TEST_F(UsageFileProperty, AnImportOfTheSameDayIsTheIdentityAndReversesTheRoutersList) {
    for_random_documents([](random_t &random, document_t &document) {
        make(document);
        const std::string before = world::render_store();
        const std::string exported = export_text();
        world::set_now(world::default_now + random.below(11 * 3600));
        ASSERT_EQ(import_text(exported), 0);
        world::set_now(world::default_now);
        std::reverse(document.router.begin(), document.router.end());
        EXPECT_EQ(export_text(), usage_file::text(document));
        // Twice reversed, all is as it was, the links of rules and records included.
        ASSERT_EQ(import_text(export_text()), 0);
        std::reverse(document.router.begin(), document.router.end());
        EXPECT_EQ(export_text(), usage_file::text(document));
        EXPECT_EQ(world::render_store(), before);
    });
}

TEST_F(UsageFileProperty, AnEmptyStoreTakesEveryFigureOver) {
    for_random_documents([](random_t &, document_t &document) {
        ASSERT_EQ(import_text(usage_file::text(document)), 0);
        std::reverse(document.router.begin(), document.router.end());
        EXPECT_EQ(export_text(), usage_file::text(without_settings(document)));
    });
}

TEST_F(UsageFileProperty, NothingOfAnEarlierStoreShowsInTheProfilesOfAFile) {
    for_random_documents([](random_t &random, document_t &document) {
        document_t earlier = without_settings(document);
        for (profile_t &profile : earlier.profiles) {
            profile.apps = random.apps();
            profile.daily = random.figure();
        }
        earlier.router = random.apps();
        make(earlier);
        ASSERT_EQ(import_text(usage_file::text(document)), 0);
        std::reverse(document.router.begin(), document.router.end());
        EXPECT_EQ(export_text(), usage_file::text(without_settings(document)));
    });
}

TEST_F(UsageFileProperty, BrokenBytesLeaveTheStoreAsItWasOrMakeAValidOne) {
    for_random_documents([](random_t &random, document_t &document) {
        make(document);
        const std::string before = export_text();
        std::string broken = before;
        for (int32_t n = 1 + random.below(3); n > 0; --n)
            broken[static_cast<size_t>(random.below(static_cast<int32_t>(broken.size())))] =
                static_cast<char>(random.below(256));
        if (import_text(broken) != 0) {
            EXPECT_EQ(export_text(), before);
        } else {
            EXPECT_EQ(import_text(export_text()), 0);
        }
    });
}

} // namespace
