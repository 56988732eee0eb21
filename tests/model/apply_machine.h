#pragma once
/// A router with its daemon in this process, and a client that applies households to it over a wire
/// that can be cut.

#include "tests/model/apply_engine.h"
#include "tests/model/apply_household.h"
#include "tests/model/daemon.h"
#include "tests/model/rules.h"

#include "tests/lib/exchange.h"
#include "tests/lib/world.h"

#include "client/apply.h"
#include "core/debug_log.h"

#include <climits>
#include <filesystem>
#include <set>
#include <string>
#include <unistd.h>
#include <vector>

namespace model {

inline const std::string state_folder = "/tmp/apply_state";
inline const std::string usage_path = "/tmp/apply_usage.json";

struct step_t {
    enum {
        operation,
        stop,  ///< the daemon is stopped and started
        kill,  ///< it is killed and started: the engine hears nothing of it
        apply, ///< somebody applies a household
    } what = operation;
    operation_t done = {};    ///< of the others, only its time
    bool loses_lines = false; ///< the engine's shell fails meanwhile
    wanted_t household = {};
    bool prunes = false;
    bool restores = false; ///< what was counted before the daemon's end
    int cut_after = INT_MAX;
};

/// When the wire is cut.
struct cut_t {
    int after = INT_MAX;       ///< requests that are answered
    bool loses_answer = false; ///< the next one is carried out, too
};

ctl_apply_wish wish_to(bool repair, bool prune, const char *usage = nullptr);

/// A router, its daemon, and a client.
class machine_t {
public:
    explicit machine_t(const char *zone) {
        world::reset();
        world::set_zone(zone);
        world::on_system([this](const std::string &) {
            statuses_.push_back(fails_ ? 256 : 0);
            return statuses_.back();
        });
        if (utm_app_debug_set(0) != 0)
            abort();
        set_last_export(world::default_now);
        clear_disk();
        std::filesystem::remove_all(state_folder);
    }

    void set_now(time_t now) {
        now_ = now;
        world::set_now(now);
    }
    time_t now() const { return now_; }

    void carry_out(const step_t &step) {
        if (step.what == step_t::stop || step.what == step_t::kill)
            counted_ = counted();
        set_now(step.done.now);
        fails_ = step.loses_lines;
        switch (step.what) {
        case step_t::stop:
        case step_t::kill:
            restart(step);
            break;
        case step_t::apply:
            apply(step);
            break;
        case step_t::operation:
            model::carry_out(step.done);
        }
        hear();
        fails_ = false;
    }

    ctl_exit apply(const wanted_t &wanted, const ctl_apply_wish &wish, const cut_t &cut = {});

    void set_up(const wanted_t &wanted, const restored_t &restored) {
        model::set_up(
            wanted, restored, [](void *machine) { static_cast<machine_t *>(machine)->hear(); },
            this);
    }

    void hear() {
        engine_.hear(world::trace(), statuses_);
        statuses_.clear();
        if (truncate(debug_log_path, 0) != 0)
            abort();
    }

    const engine_t &engine() const { return engine_; }
    /// How many requests the last `apply` has sent.
    int requests() const { return requests_; }
    /// Whether the last `apply` said that it did something.
    bool has_changed() const { return has_changed_; }

    /// How the last step's `apply` ended.
    ctl_exit last_status() const { return last_status_; }
    const restored_t &counted_before_the_end() const { return counted_; }

    /// Forgets blocks of what no client can know: what others have given the daemon since the last
    /// `apply`, and the daemon has lost.
    void forget_unknown(const wanted_t &wanted);

private:
    void restart(const step_t &step);
    void apply(const step_t &step);
    void meet(const wanted_t &wanted);
    static ctl_exit ask(void *context, const utm_app_config_cmd &request,
                        std::span<utm_app_config_reply> replies, size_t *count);
    ctl_exit take(const std::string &answer, std::span<utm_app_config_reply> replies,
                  size_t *count);

    engine_t engine_;
    time_t now_ = world::default_now;
    std::vector<int> statuses_; ///< of the command lines that the engine has not heard yet
    bool fails_ = false;
    cut_t cut_;
    int requests_ = 0;
    bool has_changed_ = false;
    ctl_exit last_status_ = CTL_DONE;
    restored_t counted_; ///< before the daemon's last end
    /// What a client has met: in the daemon or in a household, at the last `apply` that came to
    /// its end and since.
    std::set<std::string> devices_;
    std::set<int32_t> people_;
};

} // namespace model
