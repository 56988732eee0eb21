#!/usr/bin/env bash
# Installs a build below a temporary folder and as a Debian package, and looks at what is there.
#
#   install_test.sh BUILD VERSION LIBDIR
#
# BUILD is configured for the prefix /usr, LIBDIR is its library folder, such as lib; empty when it
# was linked against the router's own notification library. Without dpkg-deb the package is left out.
set -euo pipefail

build=$(realpath -- "$1")
version=$2
libdir=$3
here=$(cd "$(dirname "$0")" && pwd)
source=$(cd "$here/../.." && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

fail() {
    echo "$*" >&2
    exit 1
}

expected_files() {
    local page
    printf '%s\n' bin/utm_appctl libexec/utm_appctl_monitor sbin/utm_appd sbin/utm_appd_fenced \
        lib/systemd/system/utm-appd.service share/man/man1/utm_appctl.1 \
        share/man/man8/utm_appd.8 share/bash-completion/completions/utm_appctl \
        share/zsh/vendor-completions/_utm_appctl share/fish/vendor_completions.d/utm_appctl.fish \
        share/doc/utm-appd/{README.md,LICENSE,copyright}
    for page in "$source"/docs/*.{md,png,json}; do
        echo "share/doc/utm-appd/docs/${page##*/}"
    done
    (cd "$source/docs" && find examples -type f -printf 'share/doc/utm-appd/docs/%p\n')
    if [[ -n $libdir ]]; then echo "$libdir/utm_appd/libqvutm_notify.so"; fi
}

# look_at ROOT: the whole list of files below it, and the programs.
look_at() {
    local root=$1 libraries
    diff <(expected_files | sed 's,^,usr/,' | LC_ALL=C sort) \
        <(cd "$root" && find . ! -type d -printf '%P\n' | LC_ALL=C sort) ||
        fail "< expected, > installed"
    [[ $(cd "$root/usr" && stat -c %a sbin/utm_appd sbin/utm_appd_fenced bin/utm_appctl libexec/utm_appctl_monitor |
        sort -u) == 755 ]] ||
        fail "the programs are not for everybody to start"
    [[ $("$root/usr/bin/utm_appctl" --version) == "utm_appctl $version" ]] ||
        fail "utm_appctl --version says something else"
    [[ $("$root/usr/sbin/utm_appd" --version) == "utm_appd $version" ]] ||
        fail "utm_appd --version says something else"
    grep -q '^<!DOCTYPE html>' <("$root/usr/bin/utm_appctl" report \
        "$source/tests/unit/golden/household.json") || fail "utm_appctl report writes no page"
    "$here/hardening_test.sh" "$root/usr/bin/utm_appctl" readelf libjson-c.so.5
    "$here/hardening_test.sh" "$root/usr/libexec/utm_appctl_monitor" readelf libjson-c.so.5
    "$here/hardening_test.sh" "$root/usr/sbin/utm_appd" readelf libjson-c.so.5 libqvutm_notify.so
    libraries=$(ldd "$root/usr/sbin/utm_appd")
    if grep 'not found' <<<"$libraries"; then fail "the daemon lacks a library"; fi
    [[ -z $libdir ]] || grep -qF "=> $root/usr/" <<<"$libraries" ||
        fail "the daemon does not find its own substitute"
}

DESTDIR=$folder/staged cmake --install "$build" >"$folder/log" || fail "$(cat "$folder/log")"
look_at "$folder/staged"
# The tree may be moved.
mv "$folder/staged" "$folder/moved"
look_at "$folder/moved"

# Where the other program is missing, the client says which, and in what package it is.
mv "$folder/moved/usr/libexec" "$folder/libexec"
status=0
said=$("$folder/moved/usr/bin/utm_appctl" metrics --json 2>"$folder/log") || status=$?
[[ $status == 2 ]] || fail "without utm_appctl_monitor, metrics ends with $status"
[[ $said == *'"metrics\" needs the program utm_appctl_monitor, which is not installed. On OpenWrt, install'* ]] ||
    fail "without utm_appctl_monitor, metrics prints $said"
diff - "$folder/log" <<'END' || fail "< expected, > said without utm_appctl_monitor"
utm_appctl: "metrics" needs the program utm_appctl_monitor, which is not installed
On OpenWrt, install the package utm_appctl-monitor
END
"$folder/moved/usr/bin/utm_appctl" help metrics >/dev/null || fail "its help is missing, too"

if ! command -v dpkg-deb >/dev/null || ! command -v dpkg-shlibdeps >/dev/null; then
    echo "needs debian-packages: no dpkg-deb or dpkg-shlibdeps, so the package was not built"
    exit 77
fi
(cd "$build" && cpack -G DEB -B "$folder/package" >"$folder/log") || fail "$(cat "$folder/log")"
packages=("$folder"/package/*.deb)
dpkg-deb --extract "${packages[0]}" "$folder/unpacked"
look_at "$folder/unpacked"

field() { dpkg-deb --field "${packages[0]}" "$1"; }
[[ $(field Package) == utm-appd ]] || fail "Package: $(field Package)"
[[ $(field Version) == "$version" ]] || fail "Version: $(field Version)"
fence=passwd,\ util-linux,\ mount
[[ $(field Depends) =~ ^"$fence",\ libc6\ \([^,]*\),\ libjson-c5\ \([^,]*\)$ ]] ||
    fail "Depends: $(field Depends)"
