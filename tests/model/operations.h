#pragma once
/// Random operations on the daemon: small ranges, so that they meet, and sometimes bad values.

#include "tests/model/change.h"
#include "tests/model/state.h"

#include "format/protocol.h"

#include <deque>
#include <random>

namespace model {

enum class kind_t { command, tick, clock, restart, change };

struct operation_t {
    kind_t kind = kind_t::clock;
    std::string text;              ///< for the history of a failure
    time_t now = 0;                ///< what the clock shows from here on
    std::string request;           ///< 136 bytes, of a command
    std::vector<answer_t> answers; ///< of the programs that the operation starts
    time_t step = 0;               ///< by which the clock is moved first
    change_t change;
    long uptime = 86'400;
    int sysinfo_result = 0;
};

/// Makes one operation after the other. A seed always gives the same ones.
class generator_t {
public:
    explicit generator_t(uint32_t seed) : random_(seed) {}
    operation_t next(const state_t &state);

private:
    /// @return a number from 0 to below `bound`
    int32_t below(int32_t bound);
    bool one_in(int32_t n) { return below(n) == 0; }
    template <typename T>
    T one_of(std::initializer_list<T> values) {
        return values.begin()[below(static_cast<int32_t>(values.size()))];
    }

    int32_t profile_id();
    int32_t policy_id();
    int32_t limit_minutes();
    uint8_t command_type();
    time_t clock_step(time_t now);
    figure_t figure();
    answer_t reply();
    std::string request(uint8_t type, std::string *text);
    operation_t command();
    operation_t command(uint8_t type);
    operation_t tick();

    // file_operations.cpp
    int32_t interval();
    std::string path();
    operation_t file_command(uint8_t type, const std::string &path);
    operation_t clock(time_t step);
    operation_t change(const state_t &state);
    void damage(document_t *document);
    void damage(filed_app_t *app);
    operation_t request_to(uint8_t type, int32_t profile_id);
    void plan_profile(int32_t id);
    void plan_restart();
    void plan_round_trip();

    std::deque<operation_t> plan_; ///< operations that come next
    std::mt19937 random_;
};

} // namespace model
