/// Stands for a program of another machine where that machine's other programs start it: becomes
/// the emulator that runs it. No script can: its shell would complain about a preloaded library
/// that is the emulated programs'. This is linked statically, so it has no preloaded libraries at
/// all.

#include <cstddef>
#include <cstdio>
#include <unistd.h>

int main(int argc, char **argv) {
    char *words[1024] = {const_cast<char *>(SIM_EMULATOR), const_cast<char *>(SIM_PROGRAM)};
    const auto count = static_cast<size_t>(argc);
    if (count + 2 > sizeof(words) / sizeof(words[0]))
        return 127;
    for (size_t i = 1; i < count; ++i)
        words[i + 1] = argv[i];
    execvp(words[0], words);
    perror(words[0]);
    return 127;
}
