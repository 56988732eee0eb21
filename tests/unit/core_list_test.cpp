#include "core/list.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

struct entry_t {
    int number;
    config_list_node_t link;
};

class List : public testing::Test {
protected:
    void SetUp() override { list_init(&head_); }

    void append_three() {
        for (entry_t *entry : {&one_, &two_, &three_})
            list_append(&head_, &entry->link);
    }

    /// Expects entries in this order, and the other way round when the list is walked backwards.
    void expect(const std::vector<int> &numbers) {
        std::vector<int> forwards, backwards;
        for (const entry_t &entry : list_range<entry_t>(&head_))
            forwards.push_back(entry.number);
        for (config_list_node_t *node = head_.prev; node != &head_; node = node->prev)
            backwards.insert(backwards.begin(), list_record<entry_t>(node)->number);
        EXPECT_EQ(forwards, numbers);
        EXPECT_EQ(backwards, numbers);
        EXPECT_EQ(list_is_empty(&head_), numbers.empty());
    }

    config_list_node_t head_ = {};
    entry_t one_ = {1, {}}, two_ = {2, {}}, three_ = {3, {}};
};

TEST_F(List, AppendsAtTheTailAndPushesAtTheFront) {
    expect({});
    append_three();
    expect({1, 2, 3});
    list_init(&head_);
    for (entry_t *entry : {&one_, &two_, &three_})
        list_push_front(&head_, &entry->link);
    expect({3, 2, 1});
}

TEST_F(List, JoinsTheNeighboursOfANodeThatLeaves) {
    const std::pair<entry_t *, std::vector<int>> table[] = {
        {&one_, {2, 3}}, {&two_, {1, 3}}, {&three_, {1, 2}}};
    for (const auto &[leaving, rest] : table) {
        list_init(&head_);
        append_three();
        list_unlink(&leaving->link);
        expect(rest);
        EXPECT_EQ(leaving->link.next, nullptr);
        EXPECT_EQ(leaving->link.prev, nullptr);
    }
}

TEST_F(List, LetsAWalkTakeOutTheRecordThatItLooksAt) {
    append_three();
    std::vector<int> seen;
    for (entry_t &entry : list_range<entry_t>(&head_)) {
        seen.push_back(entry.number);
        list_unlink(&entry.link);
    }
    EXPECT_EQ(seen, (std::vector{1, 2, 3}));
    expect({});
}

} // namespace
