#pragma once
/// Random operations on the daemon: small ranges, so that they meet, and sometimes bad values.

#include "tests/unit/model/state.h"

#include <random>

namespace model {

enum class kind_t { command, tick, clock };

struct operation_t {
    kind_t kind = kind_t::clock;
    std::string text;              ///< for the history of a failure
    time_t now = 0;                ///< what the clock shows from here on
    std::string request;           ///< 136 bytes, of a command
    std::vector<answer_t> answers; ///< of the programs that the operation starts
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
    T one_of(std::initializer_list<T> values);

    int32_t profile_id();
    int32_t policy_id();
    int32_t limit_minutes();
    uint8_t command_type();
    time_t clock_step();
    figure_t figure();
    answer_t reply();
    std::string request(uint8_t type, std::string *text);
    operation_t command();

    std::mt19937 random_;
};

} // namespace model
