#include "usage/app_index.h"

#include "tests/lib/int32_limits.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"

#include <gtest/gtest.h>
#include <random>

namespace {

class AppIndex : public usage_file_fixture {
protected:
    static config_list_node_t *list() UTM_STORE_LOCKED {
        return &utm_app_config_global_app_stat_list;
    }

    /// Links a record in at the front, as collecting does.
    static config_app_usage_t *push(int32_t app_id) UTM_STORE_LOCKED {
        config_app_usage_t *usage = heap_allocate<config_app_usage_t>();
        usage->app_id = app_id;
        list_push_front(list(), &usage->link);
        utm_app_config_global_app_stat_list_count += 1;
        return usage;
    }

    /// Expects that an index finds what a walk of the list finds.
    static void expect_same(const app_index_t &index, int32_t app_id) UTM_STORE_LOCKED {
        EXPECT_EQ(app_index_find(&index, app_id), utm_app_find_app_usage(list(), app_id)) << app_id;
    }
};

TEST_F(AppIndex, OfAnEmptyListFindsNothing) {
    const mutex_guard lock(utm_app_config_mutex);
    const app_index_t index = app_index_of(list());
    for (const int32_t app_id : {0, 1, -1, int32_max, int32_min})
        EXPECT_EQ(app_index_find(&index, app_id), nullptr);
}

TEST_F(AppIndex, FindsEveryRecordOfItsList) {
    const mutex_guard lock(utm_app_config_mutex);
    std::vector<int32_t> ids = {0, -1, int32_max, int32_min};
    for (int32_t id = 1; id < 3000; id += 7)
        ids.push_back(id);
    for (int32_t power = 1; power > 0 && power < 1 << 30; power *= 2)
        ids.push_back(power << 1);
    for (const int32_t id : ids)
        if (utm_app_find_app_usage(list(), id) == nullptr)
            push(id);
    const app_index_t index = app_index_of(list());
    for (const int32_t id : ids) {
        ASSERT_NE(app_index_find(&index, id), nullptr) << id;
        expect_same(index, id);
        expect_same(index, id ^ 1);
    }
}

TEST_F(AppIndex, FindsTheFirstOfSeveralRecordsOfOneApplication) {
    const mutex_guard lock(utm_app_config_mutex);
    push(10);
    push(11);
    config_app_usage_t *first = push(10);
    const app_index_t index = app_index_of(list());
    EXPECT_EQ(app_index_find(&index, 10), first);
    EXPECT_EQ(index.count, 2U);
}

TEST_F(AppIndex, TakesRecordsInAndGrowsWithTheList) {
    const mutex_guard lock(utm_app_config_mutex);
    app_index_t index = app_index_of(list());
    for (int32_t id = 0; id < 5000; ++id) {
        ASSERT_EQ(app_index_find(&index, id * 64), nullptr);
        app_index_add(&index, push(id * 64));
        ASSERT_LE(index.count * 2, index.capacity);
    }
    for (int32_t id = 0; id < 5000; ++id)
        expect_same(index, id * 64);
}

TEST_F(AppIndex, WalksTheListWithoutMemoryForATable) {
    const mutex_guard lock(utm_app_config_mutex);
    config_app_usage_t *usage = push(10);
    world::fail_allocation(1);
    app_index_t index = app_index_of(list());
    world::fail_allocation(0);
    EXPECT_EQ(index.slots, nullptr);
    EXPECT_EQ(app_index_find(&index, 10), usage);
    config_app_usage_t *added = push(11);
    app_index_add(&index, added);
    EXPECT_EQ(app_index_find(&index, 11), added);
    EXPECT_EQ(app_index_find(&index, 12), nullptr);
}

TEST_F(AppIndex, WalksTheListWhenItCannotGrow) {
    const mutex_guard lock(utm_app_config_mutex);
    app_index_t index = app_index_of(list());
    for (int32_t id = 1; id <= 200; ++id) {
        config_app_usage_t *usage = push(id);
        world::fail_allocation(1);
        app_index_add(&index, usage);
        world::fail_allocation(0);
    }
    EXPECT_EQ(index.slots, nullptr);
    for (int32_t id = 0; id <= 201; ++id)
        expect_same(index, id);
}

TEST_F(AppIndex, FindsWhatAWalkFindsInRandomLists) {
    std::mt19937 random(20260304);
    for (int round = 0; round < 200; ++round) {
        empty_store();
        forget_log();
        const mutex_guard lock(utm_app_config_mutex);
        const int32_t range = static_cast<int32_t>(random() % 300) + 1;
        for (auto n = random() % 200; n > 0; --n)
            push(static_cast<int32_t>(random() % static_cast<unsigned long>(range)) - 20);
        app_index_t index = app_index_of(list());
        for (int step = 0; step < 100; ++step) {
            const int32_t id =
                static_cast<int32_t>(random() % static_cast<unsigned long>(2 * range)) - 20;
            expect_same(index, id);
            if (app_index_find(&index, id) == nullptr)
                app_index_add(&index, push(id));
        }
    }
}

} // namespace
