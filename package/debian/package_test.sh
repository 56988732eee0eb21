#!/usr/bin/env bash
# Installs the Debian package with dpkg, starts its daemon as its service does, and tries the fence.
#
#   package_test.sh BUILD
#
# All of that in an overlay of this machine's files with a /dev, a /run and a /tmp of its own, seen
# by nobody else. BUILD is configured for what ships. There is no systemd in there: the service's
# command lines are run by hand. Ends with 0 when all is well.
set -euo pipefail

self=$(realpath -- "$0")
build=$(realpath -- "$1")
if [[ -z ${UTM_DEBIAN_TEST:-} ]]; then
    place=$(mktemp -d)
    trap 'rmdir "$place"' EXIT
    # shellcheck disable=SC2016 # for the inner shell
    if [[ $(id -u) -ne 0 ]] || ! command -v dpkg-deb >/dev/null ||
        ! command -v dpkg-shlibdeps >/dev/null ||
        ! why=$(unshare --mount --propagation private sh -c 'mount -t tmpfs tmpfs "$1" && cd "$1" &&
            mkdir upper work root &&
            mount -t overlay -o lowerdir=/,upperdir=upper,workdir=work overlay root' \
            sh "$place" 2>&1); then
        echo "needs debian-root: ${why:-only root can, with dpkg-dev}"
        exit 77
    fi
    UTM_DEBIAN_TEST=$place unshare --mount --propagation private --pid --fork --kill-child \
        "$self" "$build"
    exit
fi

place=$UTM_DEBIAN_TEST
# The processes of this namespace.
mount -t proc proc /proc
mount -t tmpfs tmpfs "$place"
cd "$place"
mkdir upper work root package
(cd "$build" && cpack -G DEB -B "$place/package" >"$place/log" 2>&1) || { cat log >&2 && exit 1; }
mount -t overlay -o lowerdir=/,upperdir=upper,workdir=work overlay root
mount -t tmpfs -o mode=0755 tmpfs root/dev
for device in null zero full random urandom; do
    : >"root/dev/$device"
    mount --bind "/dev/$device" "root/dev/$device"
done
mkdir root/dev/dpi && echo rules >root/dev/dpi/engine
mount -t tmpfs -o mode=0755 tmpfs root/run
mount -t proc proc root/proc
mount -t tmpfs -o mode=1777 tmpfs root/tmp
cp package/*.deb root/tmp/package.deb

failures=0
# compare WHAT WANTED GOT
compare() {
    if [[ $2 == "$3" ]]; then
        echo "ok - $1"
        return
    fi
    printf 'not ok - %s\nexpected: %s\ngot: %s\n' "$1" "$2" "$3"
    failures=$((failures + 1))
}

# inside COMMAND...: there, with Debian's PATH; its output and its status, if that is not 0.
inside() {
    local status=0
    env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
        chroot "$place/root" "$@" 2>&1 || status=$?
    [[ $status == 0 ]] || echo "status $status"
}

# as_user GROUPS COMMAND...: as a user without rights, in the named groups only.
as_user() {
    local groups=--clear-groups
    [[ -z $1 ]] || groups=--groups=$1
    shift
    inside setpriv --reuid=65534 --regid=65534 "$groups" "$@"
}

daemon() {
    local process
    for process in /proc/[0-9]*; do
        [[ $(readlink "$process/exe") != */usr/sbin/utm_appd ]] || echo "${process#/proc/}"
    done
}

# --- installed

grep -v '^utm-appd:' /etc/group >root/etc/group
inside dpkg --purge utm-appd >/dev/null
compare "dpkg installs it" "" "$(inside dpkg --install /tmp/package.deb | grep status)"
group=$(inside getent group utm-appd | cut -d: -f3)
compare "a system group without members" "utm-appd:x:$group:" "$(inside getent group utm-appd)"
((group >= 100 && group < 1000)) || compare "a system group's number" "100 to 999" "$group"
compare "no daemon" "" "$(daemon)"
compare "installed again" "" "$(inside dpkg --install /tmp/package.deb | grep status)"
compare "the same group" "$group" "$(inside getent group utm-appd | cut -d: -f3)"
if command -v systemd-analyze >/dev/null; then
    # It needs a folder of its own, and looks at what else is installed.
    compare "systemd takes the service" "" \
        "$(inside systemd-analyze verify /usr/lib/systemd/system/utm-appd.service |
            grep utm.appd || true)"
fi

# --- fenced

unit=root/usr/lib/systemd/system/utm-appd.service
start=$(sed -n 's/^ExecStart=//p' "$unit")
household=$(sed -n '/^ExecStartPost=-/,/[^\\]$/p' "$unit" | sed 's/^ExecStartPost=-//')
save=$(sed -n 's/^ExecStop=-//p' "$unit")
stop=$(sed -n 's/^ExecStop=\([^-]\)/\1/p' "$unit")
forget=$(sed -n 's/^ExecStopPost=-//p' "$unit")
compare "a service that cannot close the fence does not start" \
    "chown: invalid group: ‘root:utm-appd’
status 1" "$(inside sh -c 'groupdel utm-appd; LC_ALL=C.UTF-8 utm_appd_fenced')"
compare "and there is no socket" "" "$(daemon)$(ls root/run/utm_appd.dev)"
inside groupadd --system --gid "$group" utm-appd

# What is there when the daemon begins, from which nothing is taken away later.
cat >root/usr/local/sbin/utm_appd <<'END'
#!/bin/sh
stat -c '%A %U:%G %n' /dev /dev/* /dev/dpi/*
setpriv --reuid=65534 --regid=65534 --clear-groups ls /dev 2>&1
echo through >/dev/null
END
chmod +x root/usr/local/sbin/utm_appd
compare "the fence stands before the daemon" "drwx--x--- root:utm-appd /dev
drwxr-xr-x root:root /dev/dpi
crw-rw-rw- root:root /dev/full
crw-rw-rw- root:root /dev/null
crw-rw-rw- root:root /dev/random
crw-rw-rw- root:root /dev/urandom
crw-rw-rw- root:root /dev/zero
-rw-r--r-- root:root /dev/dpi/engine
ls: cannot open directory '/dev': Permission denied" "$(inside sh -c "LC_ALL=C $start dpi")"
rm root/usr/local/sbin/utm_appd
compare "a device that there is not" "utm_appd_fenced: there is no /dev/none
status 1" "$(inside sh -c "$start none")"
compare "a way out of /dev" "utm_appd_fenced: \"../etc\" is no device of /dev
status 1" "$(inside sh -c "$start ../etc")"

compare "it starts" "" "$(inside sh -c "$start")"
compare "one daemon" 1 "$(daemon | wc -l)"
compare "the folder" "drwx--x--- root:utm-appd" "$(inside stat -c '%A %U:%G' /run/utm_appd.dev)"
compare "the socket in it" "srwxrwxrwx root:root" \
    "$(inside stat -c '%A %U:%G' /run/utm_appd.dev/utm_app_config_socket)"
compare "root reaches it" "" "$(inside utm_appctl ping | grep status)"
compare "the group reaches it" "" "$(as_user "$group" utm_appctl ping | grep status)"
compare "nobody else does" "status 3" "$(as_user "" utm_appctl ping | grep status)"
compare "nor by its other name" "status 3" \
    "$(as_user "" utm_appctl --socket /run/utm_appd.dev/utm_app_config_socket ping | grep status)"
compare "its folders" "drwx------ root:root" \
    "$(inside stat -L -c '%A %U:%G' /tmp/ApplicationData /tmp/utm_log | sort -u)"
compare "no household, nothing to do" "" "$(inside sh -c "$household")"
first=$(daemon)
compare "no second one" "utm_appd_fenced: a daemon runs already
status 1" "$(inside sh -c "$start")"
compare "the first goes on" "$first" "$(daemon)"

# --- and ended, started again after a kill, removed

mkdir -p root/etc/utm_appd
echo '{"people":[{"number":1,"name":"Mia","limit":"2h"}]}' >root/etc/utm_appd/household.json
inside sh -c "$household" >/dev/null
inside utm_appctl usage Mia --json >before
kill -KILL "$first"
while [[ -n $(daemon) ]]; do sleep 0.1; done
compare "it starts after a kill" "" "$(inside sh -c "$start")"
compare "and nobody else reaches it then" "status 3" "$(as_user "" utm_appctl ping | grep status)"
compare "but the group does" "" "$(as_user "$group" utm_appctl ping | grep status)"
compare "a household holds from the start" "" "$(inside sh -c "$household" | grep status)"
compare "as it was" "$(cat before)" "$(inside utm_appctl usage Mia --json)"
inside sh -c "$save"
sed 's/"daily_used":0/"daily_used":42/' root/var/lib/utm_appd/app_usage.json >root/tmp/used.json
inside utm_appctl import /tmp/used.json
inside sh -c "$save"
compare "what was used is saved at the end" '"daily_used":42' \
    "$(grep -o '"daily_used":42' root/var/lib/utm_appd/app_usage.json)"
MAINPID=$(daemon) timeout 30 sh -c "$stop" 2>&1
compare "another start" "" "$(inside sh -c "$start; $household" | grep status)"
compare "with what was used" '"today":42' \
    "$(inside utm_appctl usage Mia --json | grep -o '"today":42')"
compare "the service's end" "" "$(MAINPID=$(daemon) timeout 30 sh -c "$stop" 2>&1)"
compare "no daemon is left" "" "$(daemon)"
inside sh -c "$forget"
compare "no name is left" "" "$(find root/dev root/run -name 'utm_app_config_socket')"
compare "dpkg purges it" "" "$(inside dpkg --purge utm-appd | grep status)"
compare "its files are gone" "" "$(find upper/usr/sbin upper/usr/lib/systemd -type f -o -type l)"
compare "and what was used" "" "$(find root/var/lib/utm_appd 2>/dev/null)"
compare "its group stays" "$group" "$(inside getent group utm-appd | cut -d: -f3)"

[[ $failures == 0 ]]
