#pragma once
/// Fakes of the daemon's calls that fail when they are told to.
///
/// The linker puts these in place of the calls. Programs are not started: their output is `reply`,
/// and they succeed. The clock stands until it is set. What a fake fails with is what the call
/// would say on a router whose memory, descriptors or disk are used up.

#include <array>
#include <ctime>
#include <functional>
#include <string>

namespace faults {

/// What can fail.
enum class call : int {
    allocation,
    json_allocation,
    popen,
    system,
    open,
    write,
    rename,
    stat,
    sync
};
inline constexpr int calls = 9;

/// @return the name, for people
const char *name_of(call which);

/// Which of the daemon's calls fails.
struct fault {
    call which = call::allocation;
    int nth = 0;          ///< 1 is the first; 0 lets all succeed
    bool onwards = false; ///< and all after it, too
};

/// Forgets all that was counted, and lets a call fail from now on. This thread becomes the
/// daemon's.
void begin(const fault &what);

/// Lets every call succeed, and counts none.
void suspend();
/// Goes on as before `suspend`.
void resume();

/// @return calls of each kind since `begin`
std::array<int, calls> counted();

/// For as long as it lives, this thread is not the daemon's: its calls are real and not counted.
class outside {
public:
    outside();
    ~outside();
    outside(const outside &) = delete;
    outside &operator=(const outside &) = delete;

private:
    bool was_;
};

/// Sets what `gettimeofday` answers.
void set_now(time_t now);
time_t now();

/// Answers `popen`: what the program prints.
void on_popen(std::function<std::string(const std::string &line)> answer);
/// Called for each `sleep`, which returns at once.
void on_sleep(std::function<void()> act);
/// @return pipes of `popen` that are not closed yet
int open_pipes();

#if UTM_FAULTS_IN_JSON
/// @return whether the calls that led here came from json-c. Its allocations cannot fail where the
/// C library is not glibc, or a sanitizer has its own allocator.
bool is_called_by_json();
#endif

/// Ends a process that was forked. Where lines are counted, their counts are written.
[[noreturn]] void leave(int status);

/// For the fakes: counts a call.
/// @return whether it is to fail
bool fails(call which);

} // namespace faults
