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
set -euo pipefail

SQLITE_NPM_PACKAGE=better-sqlite3@13.2.0
SQLITE_VERSION=3.54.1
SQLITE_TARBALL=better-sqlite3-13.2.0.tgz
SQLITE_TARBALL_SHA256=40487589df3496f2ee0079d22b73c63fccebe7db0e8ee9a2c42421861e321e0b
SQLITE_C_SHA256=75a4760a7b9727a4c4c877aec92eacf39e52a8f2921ce00bd33be6d3a8e8e254

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

fetch_sqlite() {
    local cache=$1
    local dest="$cache/sqlite-$SQLITE_VERSION"
    if sha_ok "$dest/sqlite3.c" "$SQLITE_C_SHA256" && [ -f "$dest/sqlite3.h" ]; then
        printf '%s\n' "$dest"
        return 0
    fi
    mkdir -p "$cache"
    work=""
    work=$(mktemp -d "$cache/.fetch.XXXXXX")
    trap '[ -n "$work" ] && rm -rf "$work"' EXIT
    if ! sha_ok "$cache/$SQLITE_TARBALL" "$SQLITE_TARBALL_SHA256"; then
        ensure_npm
        (cd "$work" && npm pack --silent "$SQLITE_NPM_PACKAGE" >&2) ||
            die "npm pack $SQLITE_NPM_PACKAGE failed"
        sha_ok "$work/$SQLITE_TARBALL" "$SQLITE_TARBALL_SHA256" ||
            die "$SQLITE_TARBALL does not have the pinned sha256 $SQLITE_TARBALL_SHA256"
        mv "$work/$SQLITE_TARBALL" "$cache/$SQLITE_TARBALL"
    fi
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
*) die "usage: third-party.sh sqlite [CACHE-DIR]" ;;
esac
