/// utm_appctl: asks and commands the daemon that keeps a family's internet time.

#include "client/run.h"

int main(int argc, char **argv) {
    return ctl_run(argc, argv);
}
