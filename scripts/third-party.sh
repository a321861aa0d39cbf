#!/usr/bin/env bash
# Fetches the project's third-party sources into a cache outside the source
# tree, each at a pinned version and checked by its sha256. Nothing fetched
# here is ever committed.
#
#   scripts/third-party.sh sqlite [CACHE-DIR]
#       SQLite's single-file source (sqlite3.c, sqlite3.h), from the npm
#       package better-sqlite3, which carries it in deps/sqlite3. Prints the
#       folder holding the two files. CACHE-DIR defaults to
#       $HB_THIRD_PARTY_CACHE, else /var/cache/hourbook/third-party (shared by
#       every build tree of the machine) where it can be written, else the
#       source tree's build/third-party (not tracked).
#
#   scripts/third-party.sh pivot [CACHE-DIR]
#       The statistics' offline pivot page's scripts: npm pivottable (its
#       pivot.min.js, pivot.min.css), jquery 3 (which pivottable needs: it
#       calls $.isArray) and jquery-ui 1.14 (the drag and drop), each with its
#       licence. Prints the folder holding them.
set -euo pipefail

SQLITE_NPM_PACKAGE=better-sqlite3@13.2.0
SQLITE_VERSION=3.54.1
SQLITE_TARBALL=better-sqlite3-13.2.0.tgz
SQLITE_TARBALL_SHA256=40487589df3496f2ee0079d22b73c63fccebe7db0e8ee9a2c42421861e321e0b
SQLITE_C_SHA256=75a4760a7b9727a4c4c877aec92eacf39e52a8f2921ce00bd33be6d3a8e8e254

PIVOT_PACKAGES=(
    "pivottable 2.23.0 9423a80b7e28e13fa557bece05f713aeb8c00663501e83874a72598cc07ade2e"
    "jquery 3.8.0 8d962d4569b757756cf21fc5f72a5185cbf299e9c5b71a6995a65f57c5a0e48f"
    "jquery-ui 1.14.2 8f021edc451532d858f438eff47780b646df4fb36d2a7232eedb35c38bc6a244"
)
# package file -> the name it is kept under
PIVOT_FILES=(
    "pivottable package/dist/pivot.min.js pivot.min.js"
    "pivottable package/dist/pivot.min.css pivot.min.css"
    "pivottable package/LICENSE.md pivottable-LICENSE.txt"
    "jquery package/dist/jquery.min.js jquery.min.js"
    "jquery package/LICENSE.txt jquery-LICENSE.txt"
    "jquery-ui package/dist/jquery-ui.min.js jquery-ui.min.js"
    "jquery-ui package/LICENSE.txt jquery-ui-LICENSE.txt"
)

die() {
    echo "third-party.sh: $*" >&2
    exit 1
}

sha_ok() { # FILE SHA256
    [ -f "$1" ] && [ "$(sha256sum "$1" | cut -d' ' -f1)" = "$2" ]
}

# npm comes from Debian when the machine has none.
ensure_npm() {
    command -v npm >/dev/null 2>&1 && return 0
    [ "$(id -u)" = 0 ] || die "npm is missing and installing it needs root (apt-get install npm)"
    echo "third-party.sh: installing Debian's npm" >&2
    DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=300 install -y \
        --no-install-recommends npm </dev/null >&2 || die "apt-get install npm failed"
}

# A scratch folder in the cache ($work), removed when the script ends.
start_work() { # CACHE
    mkdir -p "$1"
    work=""
    work=$(mktemp -d "$1/.fetch.XXXXXX")
    trap '[ -n "$work" ] && rm -rf "$work"' EXIT
}

# A pinned npm tarball into the cache (fetched with npm pack into $work
# when missing or not matching its sha256).
fetch_tarball() { # CACHE NAME VERSION SHA256
    local cache=$1 name=$2 version=$3 sha=$4
    local tarball="$name-$version.tgz"
    if ! sha_ok "$cache/$tarball" "$sha"; then
        ensure_npm
        (cd "$work" && npm pack --silent "$name@$version" >&2) || die "npm pack $name@$version failed"
        sha_ok "$work/$tarball" "$sha" || die "$tarball does not have the pinned sha256 $sha"
        mv "$work/$tarball" "$cache/$tarball"
    fi
}

fetch_sqlite() {
    local cache=$1
    local dest="$cache/sqlite-$SQLITE_VERSION"
    if sha_ok "$dest/sqlite3.c" "$SQLITE_C_SHA256" && [ -f "$dest/sqlite3.h" ]; then
        printf '%s\n' "$dest"
        return 0
    fi
    start_work "$cache"
    fetch_tarball "$cache" better-sqlite3 "${SQLITE_NPM_PACKAGE#*@}" "$SQLITE_TARBALL_SHA256"
    tar -xzf "$cache/$SQLITE_TARBALL" -C "$work" package/deps/sqlite3/sqlite3.c \
        package/deps/sqlite3/sqlite3.h || die "$SQLITE_TARBALL has no deps/sqlite3"
    sha_ok "$work/package/deps/sqlite3/sqlite3.c" "$SQLITE_C_SHA256" ||
        die "sqlite3.c does not have the pinned sha256 $SQLITE_C_SHA256"
    mkdir -p "$dest.new"
    mv "$work/package/deps/sqlite3/sqlite3.c" "$work/package/deps/sqlite3/sqlite3.h" "$dest.new/"
    rm -rf "$dest"
    mv "$dest.new" "$dest"
    printf '%s\n' "$dest"
}

fetch_pivot() {
    local cache=$1
    local dest="$cache/pivot-2.23.0-jquery-3.8.0-ui-1.14.2"
    if [ -f "$dest/.complete" ]; then
        printf '%s\n' "$dest"
        return 0
    fi
    start_work "$cache"
    local entry name version sha file from to
    for entry in "${PIVOT_PACKAGES[@]}"; do
        read -r name version sha <<<"$entry"
        fetch_tarball "$cache" "$name" "$version" "$sha"
        mkdir -p "$work/$name"
        tar -xzf "$cache/$name-$version.tgz" -C "$work/$name" || die "$name-$version.tgz: cannot unpack"
    done
    mkdir -p "$dest.new"
    for file in "${PIVOT_FILES[@]}"; do
        read -r name from to <<<"$file"
        [ -f "$work/$name/$from" ] || die "$name has no $from"
        cp "$work/$name/$from" "$dest.new/$to"
    done
    touch "$dest.new/.complete"
    rm -rf "$dest"
    mv "$dest.new" "$dest"
    printf '%s\n' "$dest"
}

default_cache() {
    local shared=/var/cache/hourbook/third-party
    if mkdir -p "$shared" 2>/dev/null && [ -w "$shared" ]; then
        printf '%s' "$shared"
    else
        printf '%s' "$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/build/third-party"
    fi
}

what=${1:-}
cache=${2:-${HB_THIRD_PARTY_CACHE:-$(default_cache)}}
case $what in
sqlite) fetch_sqlite "$cache" ;;
pivot) fetch_pivot "$cache" ;;
*) die "usage: third-party.sh sqlite|pivot [CACHE-DIR]" ;;
esac
