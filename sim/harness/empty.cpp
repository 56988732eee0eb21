/// A program that needs the daemon's libraries and does nothing: what the daemon's memory is
/// measured against. It says when it is there.

#include <unistd.h>

int main() {
    if (write(STDOUT_FILENO, "!", 1) != 1)
        return 1;
    for (;;)
        pause();
}
