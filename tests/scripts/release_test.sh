#!/usr/bin/env bash
# scripts/release, in a small repository of its own.
set -euo pipefail

source=$(cd "$(dirname "$0")/../.." && pwd)
if ! command -v git >/dev/null; then
    echo "needs git: there is none"
    exit 77
fi
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# No configuration of whoever runs this, and an hour that no commit shares with another.
export GIT_CONFIG_GLOBAL=/dev/null GIT_CONFIG_SYSTEM=/dev/null
export GIT_AUTHOR_NAME=nobody GIT_AUTHOR_EMAIL=nobody@example.org
export GIT_COMMITTER_NAME=nobody GIT_COMMITTER_EMAIL=nobody@example.org
hour=0
commit() {
    hour=$((hour + 1))
    git add -A
    GIT_COMMITTER_DATE="2031-01-01 $hour:00:00Z" git commit -qm "$1"
}

failed=0
# expect WHAT WANTED GOT
expect() {
    [[ $2 == "$3" ]] && return
    printf '%s\nexpected: %s\ngot: %s\n' "$1" "$2" "$3" >&2
    failed=1
}

# refused WHAT STATUS MESSAGE ARGUMENT...: nothing is made and the hash stays.
refused() {
    local what=$1 wanted=$2 message=$3 said status=0 before
    shift 3
    before=$(cat package/openwrt/Makefile)
    said=$(scripts/release "$@" 2>&1) || status=$?
    expect "$what: status" "$wanted" "$status"
    expect "$what: message" "$message" "$said"
    expect "$what: no tarball" "" "$(ls out 2>/dev/null || true)"
    expect "$what: the Makefile" "$before" "$(cat package/openwrt/Makefile)"
}

mkdir -p "$folder/first/scripts" "$folder/first/package/openwrt"
cd "$folder/first"
git init -q
cp "$source/scripts/release" scripts/
cp "$source/package/openwrt/Makefile" package/openwrt/
sed -i 's/^PKG_VERSION:=.*/PKG_VERSION:=0.7.1/; s/^PKG_HASH:=.*/PKG_HASH:=skip/' \
    package/openwrt/Makefile
echo 'project(utm_appd VERSION 0.7.1 LANGUAGES CXX)' >CMakeLists.txt
printf '# Changelog\n\n## Unreleased\n\n- News.\n\n## 0.7.0\n\nReleased on 2030-01-01.\n' \
    >CHANGELOG.md
echo /out/ >.gitignore
commit "before the release"

usage='usage: scripts/release VERSION [FOLDER], such as scripts/release 1.2.3'
refused "no version" 2 "$usage"
refused "a version with a letter" 2 "$usage" v0.7.1
refused "a path as the version" 2 "$usage" 0.7.1/../..
refused "another version" 1 "scripts/release: CMakeLists.txt is for version 0.7.1, not 0.7.2" 0.7.2
refused "unreleased news" 1 \
    "scripts/release: CHANGELOG.md is for version Unreleased, not 0.7.1" 0.7.1

sed -i 's/^## Unreleased/## 0.7.1/' CHANGELOG.md
refused "what is not committed" 1 "scripts/release: not everything is committed:
 M CHANGELOG.md" 0.7.1
sed -i '/^Released on/d' CHANGELOG.md
commit "no date"
refused "a release without a date" 1 "scripts/release: CHANGELOG.md does not say when 0.7.1 was\
 released, as \"Released on 2030-01-31.\"" 0.7.1
sed -i 's/^## 0.7.1/&\n\nReleased on 2030-02-31./' CHANGELOG.md
commit "a day that there is not"
refused "a release on February 31" 1 "scripts/release: CHANGELOG.md does not say when 0.7.1 was\
 released, as \"Released on 2030-01-31.\"" 0.7.1
sed -i 's/^Released on.*/Released on 2030-02-28./' CHANGELOG.md
sed -i 's/^PKG_VERSION:=.*/PKG_VERSION:=0.7.0/' package/openwrt/Makefile
commit "the package is behind"
refused "a package that is behind" 1 \
    "scripts/release: package/openwrt/Makefile is for version 0.7.0, not 0.7.1" 0.7.1
sed -i 's/^PKG_VERSION:=.*/PKG_VERSION:=0.7.1/' package/openwrt/Makefile
commit "the release"
echo '# mine' >>package/openwrt/Makefile
refused "a package with changes of one's own" 1 "scripts/release: not everything is committed:
+# mine" 0.7.1
git checkout -q package/openwrt/Makefile

said=$(scripts/release 0.7.1)
hash=$(sha256sum out/utm_appd-0.7.1.tar.gz | cut -d ' ' -f 1)
expect "what it says" "$hash  out/utm_appd-0.7.1.tar.gz
package/openwrt/Makefile has this hash now: commit it." "$said"
expect "the package's hash, and nothing else" "-PKG_HASH:=skip
+PKG_HASH:=$hash" "$(git diff --unified=0 | grep '^[-+][^-+]')"
expect "what is in it" "drwxr-xr-x 0/0 0 2030-02-28 00:00 utm_appd-0.7.1/
-rw-r--r-- 0/0 6 2030-02-28 00:00 utm_appd-0.7.1/.gitignore
-rw-r--r-- 0/0 $(stat -c %s CHANGELOG.md) 2030-02-28 00:00 utm_appd-0.7.1/CHANGELOG.md
-rw-r--r-- 0/0 $(stat -c %s CMakeLists.txt) 2030-02-28 00:00 utm_appd-0.7.1/CMakeLists.txt
drwxr-xr-x 0/0 0 2030-02-28 00:00 utm_appd-0.7.1/package/
drwxr-xr-x 0/0 0 2030-02-28 00:00 utm_appd-0.7.1/package/openwrt/
-rw-r--r-- 0/0 $(git cat-file -s HEAD:package/openwrt/Makefile) 2030-02-28 00:00\
 utm_appd-0.7.1/package/openwrt/Makefile
drwxr-xr-x 0/0 0 2030-02-28 00:00 utm_appd-0.7.1/scripts/
-rwxr-xr-x 0/0 $(stat -c %s scripts/release) 2030-02-28 00:00 utm_appd-0.7.1/scripts/release" \
    "$(TZ=UTC0 tar -tvzf out/utm_appd-0.7.1.tar.gz | tr -s ' ')"
expect "the Makefile in it" "$(git show HEAD:package/openwrt/Makefile)" \
    "$(tar -xzOf out/utm_appd-0.7.1.tar.gz utm_appd-0.7.1/package/openwrt/Makefile)"

commit "the hash"
expect "once it is committed" "$hash  out/utm_appd-0.7.1.tar.gz
package/openwrt/Makefile has this hash, and is committed." "$(scripts/release 0.7.1)"

# Somebody else, later, in another place.
(
    umask 027
    git clone -q "$folder/first" "$folder/second"
    cd "$folder/second"
    git -c tar.umask=0 commit -q --amend --date '2032-05-05 05:05:05Z' -m "another message"
    TZ=Pacific/Auckland LANG=C.UTF-8 scripts/release 0.7.1 elsewhere >/dev/null
)
expect "the same bytes everywhere" "$hash" \
    "$(sha256sum "$folder/second/elsewhere/utm_appd-0.7.1.tar.gz" | cut -d ' ' -f 1)"

echo '# one line more' >>CMakeLists.txt
commit "another tree"
scripts/release 0.7.1 >/dev/null
[[ $(sha256sum out/utm_appd-0.7.1.tar.gz) != "$hash "* ]] ||
    expect "other files" "another hash" "$hash"
exit $failed
