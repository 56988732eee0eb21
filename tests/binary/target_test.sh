#!/usr/bin/env bash
# Installs a build for the router into a temporary folder and looks at what is there: hardened, and
# needing nothing that a router does not have.
#
#   target_test.sh BUILD READELF
set -euo pipefail

here=$(dirname "$0")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
DESTDIR=$folder cmake --install "$1" --prefix /usr >/dev/null
"$here/hardening_test.sh" "$folder/usr/sbin/utm_appd" "$2" libjson-c.so.5 libqvutm_notify.so
"$here/hardening_test.sh" "$folder/usr/bin/utm_appctl" "$2" libjson-c.so.5
"$here/hardening_test.sh" "$folder/usr/libexec/utm_appctl_monitor" "$2" libjson-c.so.5
