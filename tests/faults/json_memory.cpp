/// Allocations that json-c makes. It is a library of its own, so the linker cannot put a fake in
/// its calls' place. With glibc a program's own `malloc` takes the library's place for everybody,
/// and who calls it shows in the return address.

#include "tests/faults/calls.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <execinfo.h>
#include <link.h>

namespace {

struct range_t {
    uintptr_t begin;
    uintptr_t end;
};

int take_json(dl_phdr_info *info, size_t, void *result) {
    if (strstr(info->dlpi_name, "libjson-c") == nullptr)
        return 0;
    range_t *range = static_cast<range_t *>(result);
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto &segment = info->dlpi_phdr[i];
        if (segment.p_type == PT_LOAD && (segment.p_flags & PF_X) != 0)
            *range = {info->dlpi_addr + segment.p_vaddr,
                      info->dlpi_addr + segment.p_vaddr + segment.p_memsz};
    }
    return 1;
}

/// Where json-c's code is. Known once the program is linked, and nothing fails before `main`.
range_t json = {};

__attribute__((constructor)) void find_json() {
    dl_iterate_phdr(take_json, &json);
    // Loads what it needs, which allocates.
    void *address = nullptr;
    backtrace(&address, 1);
}

bool is_json(const void *address) {
    const uintptr_t at = reinterpret_cast<uintptr_t>(address);
    return at >= json.begin && at < json.end;
}

bool fails_for(const void *caller) {
    if (!is_json(caller) || !faults::fails(faults::call::json_allocation))
        return false;
    errno = ENOMEM;
    return true;
}

} // namespace

extern "C" {

void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *old, size_t size);

void *malloc(size_t size) {
    return fails_for(__builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}

void *calloc(size_t count, size_t size) {
    return fails_for(__builtin_return_address(0)) ? nullptr : __libc_calloc(count, size);
}

void *realloc(void *old, size_t size) {
    return fails_for(__builtin_return_address(0)) ? nullptr : __libc_realloc(old, size);
}

char *strdup(const char *text) {
    if (fails_for(__builtin_return_address(0)))
        return nullptr;
    const size_t size = strlen(text) + 1;
    void *copy = __libc_malloc(size);
    return copy == nullptr ? nullptr : static_cast<char *>(memcpy(copy, text, size));
}

} // extern "C"

bool faults::is_called_by_json() {
    void *addresses[64];
    const int count = backtrace(addresses, 64);
    for (int i = 0; i < count; ++i)
        if (is_json(addresses[i]))
            return true;
    return false;
}
