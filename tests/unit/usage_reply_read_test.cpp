/// Reading a reply in blocks comes out as reading it line by line does.

#include "usage/statistics_query.h"

#include "tests/lib/world.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace {

class ReplyRead : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

/// What a reply buffer holds, and how often it grew.
struct held_t {
    std::string text;
    size_t capacity = 1024;
    int grown = 0;

    bool operator==(const held_t &) const = default;
};

std::ostream &operator<<(std::ostream &to, const held_t &held) {
    return to << held.text.size() << " characters of " << held.capacity << ", grown " << held.grown
              << " times";
}

FILE *stream_of(const std::string &bytes) {
    FILE *stream = tmpfile();
    fwrite(bytes.data(), 1, bytes.size(), stream);
    rewind(stream);
    return stream;
}

/// Reads with `fgets`, 127 characters at the most, and grows by a step ahead of need.
held_t read_by_lines(const std::string &bytes) {
    held_t held;
    size_t used = 0;
    FILE *stream = stream_of(bytes);
    char line[128];
    while (fgets(line, sizeof(line), stream) != nullptr) {
        const size_t length = strlen(line);
        if (held.capacity <= used + length + 1) {
            held.capacity += 1024;
            ++held.grown;
        }
        held.text += line;
        used = held.text.size() + 1;
    }
    fclose(stream);
    return held;
}

held_t read_by_blocks(const std::string &bytes) {
    statistics_reply_t reply = {};
    EXPECT_TRUE(utm_app_statistics_create(&reply));
    FILE *stream = stream_of(bytes);
    world::fail_allocation(0);
    EXPECT_EQ(utm_app_statistics_read(&reply, stream), 0U);
    const int grown = world::allocations();
    fclose(stream);
    return {reply.text.get(), reply.capacity, grown};
}

std::string random_reply(std::mt19937 *random, const char *alphabet, size_t letters) {
    std::string bytes((*random)() % 12'000, '\0');
    for (char &byte : bytes)
        byte = alphabet[(*random)() % letters];
    return bytes;
}

TEST_F(ReplyRead, GrowsAsReadingByLinesDoesAtEveryLength) {
    for (size_t length = 0; length < 3200; ++length) {
        const std::string bytes(length, 'x');
        ASSERT_EQ(read_by_blocks(bytes), read_by_lines(bytes)) << length;
    }
}

TEST_F(ReplyRead, TakesLinesOfAnyLength) {
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        const std::string bytes = random_reply(&random, "abcdefghijklmnopqrstuvwxyz\n", 27);
        ASSERT_EQ(read_by_blocks(bytes), read_by_lines(bytes)) << round;
    }
}

TEST_F(ReplyRead, LosesWhatFollowsANulInItsLine) {
    const std::string bytes("ab\0cd\nef\ngh\0", 12);
    EXPECT_EQ(read_by_blocks(bytes).text, "abef\ngh");
}

TEST_F(ReplyRead, TakesNulsInAnyPlace) {
    std::mt19937 random(2);
    for (int round = 0; round < 300; ++round) {
        // Few NULs and few line ends, so that long lines are cut and the next piece goes on.
        std::string bytes = random_reply(&random, "abcdefghijklmnopqrstuvwxyz", 26);
        for (size_t n = random() % 40; n > 0 && !bytes.empty(); --n)
            bytes[random() % bytes.size()] = random() % 3 == 0 ? '\n' : '\0';
        ASSERT_EQ(read_by_blocks(bytes).text, read_by_lines(bytes).text) << round;
    }
}

TEST_F(ReplyRead, NamesTheSizeThatCouldNotBeHad) {
    statistics_reply_t reply = {};
    ASSERT_TRUE(utm_app_statistics_create(&reply));
    FILE *stream = stream_of(std::string(5000, 'x'));
    world::fail_allocation(3);
    EXPECT_EQ(utm_app_statistics_read(&reply, stream), 4096U);
    world::fail_allocation(0);
    fclose(stream);
}

} // namespace
