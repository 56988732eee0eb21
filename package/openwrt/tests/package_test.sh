#!/bin/sh
# Tests the package without an SDK: its Makefile with GNU make, its scripts under BusyBox.
#
#   package_test.sh BUILD_FOLDER [CASE... | PART/PARTS]
#
# The build's own `install` fills what the SDK calls PKG_INSTALL_DIR, the package's recipes fill a
# root from that, and in this root, with BusyBox for everything else, the init script and the watch
# start and stop the real daemon against the simulated router. The root is seen by nobody else: it
# has a mount and a process namespace of its own. Ends with 0 when all is well.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "${1:?usage: package_test.sh BUILD_FOLDER [CASE... | PART/PARTS]}" && pwd)
shift

if [ -z "${UTM_PACKAGE_TEST:-}" ]; then
    # Not all of /tmp is hidden, since the sources may be there.
    place=$(mktemp -d)
    trap 'rmdir "$place"' EXIT
    namespaces="--mount --propagation unchanged --pid --fork"
    [ "$(id -u)" = 0 ] || namespaces="--user --map-root-user $namespaces"
    # shellcheck disable=SC2016,SC2086 # the inner shell's place; options
    if ! why=$(unshare $namespaces sh -c 'mount --make-rprivate / && mount -t tmpfs tmpfs "$1" &&
        mkdir "$1/proc" && mount -t proc proc "$1/proc"' sh "$place" 2>&1); then
        echo "needs package-root: $why"
        exit 77
    fi
    # shellcheck disable=SC2086 # options
    UTM_PACKAGE_TEST=$place unshare $namespaces "$0" "$build" "$@"
    exit
fi

mount --make-rprivate /
# The tools that run in here look at processes of this namespace.
mount -t proc proc /proc
mount -t tmpfs -o mode=0755 tmpfs "$UTM_PACKAGE_TEST"
work=$UTM_PACKAGE_TEST/work
root=$UTM_PACKAGE_TEST/root
mkdir -p "$work" "$root"

failures=0

# compare WHAT WANTED GOT
compare() {
    if [ "$2" = "$3" ]; then
        echo "ok - $1"
        return
    fi
    echo "not ok - $1"
    printf '%s\n' "$2" >"$work/wanted"
    printf '%s\n' "$3" >"$work/got"
    diff -u "$work/wanted" "$work/got" || true
    failures=$((failures + 1))
}

# sdk_make ROOT TARGET [VARIABLE=VALUE]...: by way of the folder that is beside the root
sdk_make() {
    sdk_root=$1
    shift
    make -s --no-print-directory -C "$here/.." TOPDIR="$here/sdk" \
        PKG_INSTALL_DIR="$work/installed" PKG_INFO_DIR="$work/pkginfo" \
        ROOT="$sdk_root" PACKAGES="$sdk_root.packages" "$@"
}

files_of() {
    (cd "$1" && find . ! -type d -printf '%m %p\n' | sort -k 2)
}

DESTDIR=$work/installed cmake --install "$build" --prefix /usr >/dev/null
# What the SDK knows of others' packages.
mkdir -p "$work/pkginfo"
ldd "$work/installed/usr/bin/utm_appctl" | sed -n 's/^[[:blank:]]*\(lib[^ ]*\) .*/\1/p' |
    tee "$work/libraries" | grep -v json-c >"$work/pkginfo/libc.provides"
grep json-c "$work/libraries" >"$work/pkginfo/libjson-c.provides"

version=$(sed -n 's/^project(utm_appd VERSION \([0-9.]*\).*/\1/p' "$here/../../../CMakeLists.txt")
hash=$(sed -n 's/^PKG_HASH:=//p' "$here/../Makefile")
maintainer="The utm_appd authors <utm_appd@example.org>"
url=https://example.org/utm_appd
compare "the Makefile" "PKG_NAME=utm_appd
PKG_VERSION=$version
PKG_LICENSE=MIT
PKG_SOURCE=utm_appd-$version.tar.gz
PKG_SOURCE_URL=file:///dl
PKG_HASH=$hash
PKG_CONFIG_DEPENDS=
PKG_BUILD_DEPENDS=
CMAKE_OPTIONS=-DCMAKE_INSTALL_LIBDIR=lib -DQVUTM_NOTIFY_LIBRARY:FILEPATH=OFF
libqvutm-notify-none $version-r1: Notification library that announces nothing
libqvutm-notify-none needs , provides libqvutm-notify, conflicts
libqvutm-notify-none is in Libraries/libs, of $maintainer, at $url
utm_appctl $version-r1: Command-line client of utm_appd
utm_appctl needs +libjson-c, provides , conflicts
utm_appctl is in Network/net, of $maintainer, at $url
utm_appctl-monitor $version-r1: Monitoring by utm_appctl
utm_appctl-monitor needs +libjson-c +utm_appctl, provides , conflicts
utm_appctl-monitor is in Network/net, of $maintainer, at $url
utm_appd $version-r1: Internet time limits for a family
utm_appd needs +libjson-c +libqvutm-notify +ubus +utm_appctl, provides , conflicts
utm_appd is in Network/net, of $maintainer, at $url" "$(sdk_make "$root" show | sed 's/ *$//')"
compare "the hash is one, or there is no release" 0 \
    "$(echo "$hash" | grep -cvxE 'skip|[0-9a-f]{64}')"
compare "a tarball that is elsewhere" PKG_SOURCE_URL=file:///srv/releases \
    "$(sdk_make "$root" show UTM_APPD_SOURCE_URL=file:///srv/releases | grep PKG_SOURCE_URL)"

# The daemon's library comes from whatever package provides it.
compare "without a notification library" \
    "Package utm_appd is missing dependencies for the following libraries:
libqvutm_notify.so" "$(sdk_make "$work/alone" unpack-utm_appd 2>&1 | grep -v '^make')"
echo libqvutm_notify.so >"$work/pkginfo/libqvutm-notify.provides"
compare "with the vendor's" "" "$(sdk_make "$work/vendor" unpack-utm_appctl unpack-utm_appd 2>&1)"
daemon_files="600 ./etc/config/utm_appd
755 ./etc/init.d/utm_appd
644 ./lib/upgrade/keep.d/utm_appd
644 ./lib/upgrade/utm_appd.sh
755 ./usr/bin/utm_appctl
755 ./usr/libexec/rpcd/utm_appd
755 ./usr/libexec/utm_appd/household
755 ./usr/sbin/utm_appd
755 ./usr/sbin/utm_appd_watch
644 ./usr/share/rpcd/acl.d/utm_appd.json"
compare "the files with the vendor's" "$daemon_files" "$(files_of "$work/vendor")"
rm "$work/pkginfo/libqvutm-notify.provides"
compare "with the substitute" "" "$(sdk_make "$root" unpack 2>&1)"
compare "the files of the substitute" "755 ./usr/lib/libqvutm_notify.so" \
    "$(files_of "$root.packages/libqvutm-notify-none")"
compare "the files of the monitor" "755 ./usr/libexec/utm_appctl_monitor" \
    "$(files_of "$root.packages/utm_appctl-monitor")"
compare "all files" "$(printf '%s\n755 %s\n755 %s\n' "$daemon_files" ./usr/lib/libqvutm_notify.so \
    ./usr/libexec/utm_appctl_monitor | sort -k 2)" "$(files_of "$root")"
# acl GROUP ACCESS: the methods that the group may call
acl() {
    cat >"$work/acl.cmake" <<CMAKE
file(READ "$root/usr/share/rpcd/acl.d/utm_appd.json" document)
string(JSON methods GET "\${document}" "$1" "$2" ubus utm_appd)
message("\${methods}")
CMAKE
    cmake -P "$work/acl.cmake" 2>&1 | tr -d '[]" \n'
}
compare "who looks" status,people,usage,history "$(acl utm_appd-look read)"
compare "who changes" extend,apply "$(acl utm_appd-change write)"
compare "one or the other for each method of the object" \
    "$("$work/installed/usr/bin/utm_appctl" rpcd list | grep -o '"[a-z]*":{' | tr -d '":{')" \
    "$({ acl utm_appd-look read && echo , && acl utm_appd-change write; } | tr , '\n' | sed '/^$/d')"

# A CMake project that finds the vendor's library where it is, and not where it is ruled out.
notification_library() {
    cmake -S "$here/../../.." -B "$work/cmake" -DQVUTM_NOTIFY_LIBRARY:FILEPATH="$1" |
        sed -n 's/^-- Notification library: //p'
}
cp "$work/installed/usr/lib/utm_appd/libqvutm_notify.so" "$work"/
compare "CMake takes the vendor's library" "$work/libqvutm_notify.so" \
    "$(notification_library "$work/libqvutm_notify.so")"
rm -rf "$work/cmake"
compare "CMake takes the substitute where the vendor's is in reach" \
    "a substitute, which announces nothing to a router" \
    "$(CMAKE_LIBRARY_PATH=$work notification_library OFF)"

# The rest of the root: BusyBox, fakes, the simulated router, and the libraries of them all.
busybox=$(command -v busybox)
for folder in bin sbin dev proc tmp var test/bin lib usr/share/libubox; do
    mkdir -p "$root/$folder"
done
ln -s ../tmp/run ../tmp/lock "$root/var/"
cp "$busybox" "$root/bin/busybox"
for applet in $("$busybox" --list); do
    case $applet in
    logger | busybox) ;;
    *) ln -s busybox "$root/bin/$applet" ;;
    esac
done
cp "$here/fakes/rc.common" "$root/etc/"
cp "$work/pkginfo/utm_appd.postinst" "$root/test/postinst"
cp "$here/fakes/functions.sh" "$root/lib/"
cp "$here/fakes/jshn.sh" "$root/usr/share/libubox/"
cp "$here/fakes/reload_config" "$root/sbin/"
cp "$here/fakes/procd_instance" "$here/cases.sh" "$here/../test.sh" "$root/test/"
cp "$here/fakes/logger" "$here/fakes/utm_appctl" "$root/test/bin/"
# OpenWrt's BusyBox has it, Debian's has not.
flock=$(command -v flock)
cp "$flock" "$root/usr/bin/"
cp "$build"/sim/bin/* "$root/test/bin/"
for program in "$busybox" "$flock" $work/installed/usr/sbin/utm_appd "$build"/sim/bin/ubus; do
    for library in $(ldd "$program" | grep -o '/[^ ]*'); do
        case $library in *libqvutm_notify*) continue ;; esac
        mkdir -p "$root${library%/*}"
        cp -L "$library" "$root$library"
    done
done
cp "$build"/sim/libsimpreload.so "$root/test/"
mount -t tmpfs -o mode=0755 tmpfs "$root/dev"
mknod -m 666 "$root/dev/null" c 1 3 2>/dev/null || {
    touch "$root/dev/null"
    mount --bind /dev/null "$root/dev/null"
}
mount -t proc proc "$root/proc"

# Noon, so that no case meets a midnight.
hour=$(TZ=UTC0 date +%H)
chroot "$root" /bin/busybox env -i PATH=/test/bin:/usr/sbin:/usr/bin:/sbin:/bin \
    TZ="NOON$((${hour#0} - 12))" UTM_SIM_DIR=/tmp/sim VERSION="$version" \
    /bin/ash /test/cases.sh "$@" || failures=$((failures + 1))

[ "$failures" = 0 ]
