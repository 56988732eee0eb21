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

sdk_make() {
    make -s --no-print-directory -C "$here/.." TOPDIR="$here/sdk" PKG_INSTALL_DIR="$work/installed" "$@"
}

files_of() {
    (cd "$1" && find . ! -type d -printf '%m %p\n' | sort -k 2)
}

common_files="755 ./etc/init.d/utm_appd
755 ./usr/bin/utm_appctl"
substitute_file="755 ./usr/lib/libqvutm_notify.so"
daemon_files="755 ./usr/sbin/utm_appd
755 ./usr/sbin/utm_appd_watch"
config_file="600 ./etc/config/utm_appd"

DESTDIR=$work/installed cmake --install "$build" --prefix /usr >/dev/null

version=$(sed -n 's/^project(utm_appd VERSION \([0-9.]*\).*/\1/p' "$here/../../../CMakeLists.txt")
fields() {
    cat <<FIELDS
PKG_NAME=utm_appd
PKG_VERSION=$version
PKG_LICENSE=MIT
PKG_SOURCE=utm_appd-$version.tar.gz
PKG_CONFIG_DEPENDS=CONFIG_UTM_APPD_VENDOR_NOTIFY
PKG_BUILD_DEPENDS=$1
CMAKE_OPTIONS=-DCMAKE_INSTALL_LIBDIR=lib -DQVUTM_NOTIFY_LIBRARY:FILEPATH=$3
utm_appd: Internet time limits for a family (+libjson-c +ubus +utm_appctl$2)
utm_appctl: Command-line client of utm_appd (+libjson-c)
FIELDS
}
compare "the Makefile with the substitute" "$(fields "" "" OFF)" "$(sdk_make show)"
compare "the Makefile with the vendor's library" \
    "$(fields UTM_APPD_VENDOR_NOTIFY:vendor-notify " +UTM_APPD_VENDOR_NOTIFY:vendor-notify" \
        /staging/usr/lib/libqvutm_notify.so)" \
    "$(sdk_make show CONFIG_UTM_APPD_VENDOR_NOTIFY=y UTM_APPD_VENDOR_NOTIFY_PACKAGE=vendor-notify)"

sdk_make unpack ROOT="$root"
compare "the files with the substitute" \
    "$config_file
$common_files
$substitute_file
$daemon_files" "$(files_of "$root")"
sdk_make unpack ROOT="$work/vendor" CONFIG_UTM_APPD_VENDOR_NOTIFY=y
compare "the files with the vendor's library" \
    "$config_file
$common_files
$daemon_files" "$(files_of "$work/vendor")"

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
mkdir -p "$root/bin" "$root/sbin" "$root/dev" "$root/proc" "$root/tmp" "$root/test/bin" "$root/var"
ln -s ../tmp/run "$root/var/run"
cp "$busybox" "$root/bin/busybox"
for applet in $("$busybox" --list); do
    case $applet in
    logger | uci | busybox) ;;
    *) ln -s busybox "$root/bin/$applet" ;;
    esac
done
cp "$here/fakes/rc.common" "$root/etc/"
cp "$here/fakes/procd_instance" "$here/cases.sh" "$here/../test.sh" "$root/test/"
cp "$here/fakes/uci" "$here/fakes/logger" "$here/fakes/utm_appctl" "$root/test/bin/"
cp "$build"/sim/bin/* "$root/test/bin/"
for program in "$busybox" $work/installed/usr/sbin/utm_appd "$build"/sim/bin/ubus; do
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
