/// Part of libsimpreload.so: looks for leaks when the daemon ends.
///
/// LeakSanitizer looks when `exit` runs the handlers of the program's end. The daemon leaves with
/// `_exit`, because its other thread is still at work, so the look is taken here. In a program
/// without the sanitizer this only passes the call on.

#include <dlfcn.h>

namespace {

template <class Function>
Function find(void *where, const char *name) {
    return reinterpret_cast<Function>(dlsym(where, name));
}

} // namespace

extern "C" {

[[noreturn]] void simclock_exit(int status) __asm__("_exit");

__attribute__((visibility("default"))) void simclock_exit(int status) {
    if (const auto check = find<void (*)()>(RTLD_DEFAULT, "__lsan_do_leak_check"))
        check();
    find<void (*)(int)>(RTLD_NEXT, "_exit")(status);
    __builtin_unreachable();
}
}
