#!/usr/bin/env bash
# Builds libxlsxwriter, the XLSX writer of the report program, as a static
# library for the MinGW-w64 cross builds, from Debian's source package (a
# pinned version, its tarball checked by sha256) against Debian's MinGW zlib
# (libz-mingw-w64-dev). The native build uses Debian's libxlsxwriter-dev.
#
#   scripts/xlsxwriter.sh [x64|x86|all]     (default: all)
#
# Result (outside the tracked tree, reused by later runs):
#   build/third_party/xlsxwriter/<arch>/{include,lib/libxlsxwriter.a}
# which cmake/Xlsxwriter.cmake finds. Needs root (or sudo) the first time
# only, for the deb-src entry and apt-get update.
set -euo pipefail

HB_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=lib.sh
source "$HB_ROOT/scripts/lib.sh"

XLSX_VERSION=1.1.4
XLSX_DEB_VERSION=1.1.4-2
XLSX_ORIG=libxlsxwriter_${XLSX_VERSION}.orig.tar.gz
XLSX_SHA256=b379eb35fdd9c653ebe72485b9c992f612c7ea66f732784457997d6e782f619b
XLSX_DIR=${HB_XLSXWRITER_DIR:-$HB_ROOT/build/third_party/xlsxwriter}
SRC_LIST=/etc/apt/sources.list.d/hourbook-deb-src.sources
# libxlsxwriter's temporary files. OFF (the default here): its bundled
# tmpfileplus, in the folder the program names (the user's temporary folder)
# or TMP/TEMP. ON: the C library's tmpfile(), which on Windows creates its
# file in the root folder of the current drive, where a user without
# administrator rights may not create files (Wine lets anyone do it, so the
# tests would not notice).
XLSX_STANDARD_TMPFILE=${HB_XLSX_STANDARD_TMPFILE:-OFF}

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo -n "$@"; fi
}

# Debian's source index: a deb-src entry for bookworm's main suite.
ensure_source_index() {
    if apt-cache showsrc "libxlsxwriter=$XLSX_DEB_VERSION" 2>/dev/null | grep -q '^Package:'; then
        return 0
    fi
    if [ ! -f "$SRC_LIST" ]; then
        printf '%s\n' 'Types: deb-src' 'URIs: http://deb.debian.org/debian' 'Suites: bookworm' \
            'Components: main' 'Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg' |
            as_root tee "$SRC_LIST" >/dev/null
    fi
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=300 update </dev/null
}

fetch_source() {
    local dl="$XLSX_DIR/download"
    mkdir -p "$dl"
    if [ ! -f "$dl/$XLSX_ORIG" ]; then
        ensure_source_index
        (cd "$dl" && apt-get -q source --download-only "libxlsxwriter=$XLSX_DEB_VERSION" </dev/null)
    fi
    echo "$XLSX_SHA256  $dl/$XLSX_ORIG" | sha256sum -c --quiet - || {
        echo "error: $XLSX_ORIG does not have the expected sha256" >&2
        rm -f "$dl/$XLSX_ORIG"
        return 1
    }
    if [ ! -f "$XLSX_DIR/src/CMakeLists.txt" ]; then
        rm -rf "$XLSX_DIR/src"
        mkdir -p "$XLSX_DIR/src"
        tar -xzf "$dl/$XLSX_ORIG" -C "$XLSX_DIR/src" --strip-components=1
    fi
}

# build ARCH: a static library with its own bundled minizip and tmpfileplus,
# against the MinGW sysroot's zlib.
build_arch() {
    local arch=$1 triple
    case "$arch" in
        x64) triple=x86_64-w64-mingw32 ;;
        x86) triple=i686-w64-mingw32 ;;
        *) echo "error: unknown architecture $arch (x64 or x86)" >&2; return 1 ;;
    esac
    local out="$XLSX_DIR/$arch" work="$XLSX_DIR/build-$arch"
    local stamp="$XLSX_SHA256 tmpfile=$XLSX_STANDARD_TMPFILE"
    if [ -f "$out/lib/libxlsxwriter.a" ] && [ -f "$out/.version" ] &&
        [ "$(cat "$out/.version")" = "$stamp" ]; then
        echo "libxlsxwriter $XLSX_VERSION for $arch is built ($out)."
        return 0
    fi
    if [ ! -f "/usr/$triple/lib/libz.a" ]; then
        echo "error: /usr/$triple/lib/libz.a is missing (apt-get install libz-mingw-w64-dev)" >&2
        return 1
    fi
    rm -rf "$work" "$out"
    cmake -S "$XLSX_DIR/src" -B "$work" -G "Unix Makefiles" \
        -DCMAKE_SYSTEM_NAME=Windows \
        -DCMAKE_C_COMPILER="$triple-gcc-posix" \
        -DCMAKE_CXX_COMPILER="$triple-g++-posix" \
        -DCMAKE_RC_COMPILER="$triple-windres" \
        -DCMAKE_FIND_ROOT_PATH="/usr/$triple" \
        -DCMAKE_FIND_ROOT_PATH_MODE_PROGRAM=NEVER \
        -DCMAKE_FIND_ROOT_PATH_MODE_LIBRARY=ONLY \
        -DCMAKE_FIND_ROOT_PATH_MODE_INCLUDE=ONLY \
        -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_INSTALL_PREFIX="$out" \
        -DBUILD_SHARED_LIBS=OFF \
        -DBUILD_TESTS=OFF -DBUILD_EXAMPLES=OFF \
        -DUSE_STANDARD_TMPFILE="$XLSX_STANDARD_TMPFILE" \
        -DZLIB_INCLUDE_DIR="/usr/$triple/include" \
        -DZLIB_LIBRARY="/usr/$triple/lib/libz.a"
    cmake --build "$work" -j "$HB_JOBS"
    cmake --install "$work"
    # Some versions install into lib64 or bin; the project looks in lib.
    if [ ! -f "$out/lib/libxlsxwriter.a" ]; then
        mkdir -p "$out/lib"
        find "$out" -name 'libxlsxwriter.a' -exec cp {} "$out/lib/" \;
    fi
    echo "$stamp" >"$out/.version"
    echo "libxlsxwriter $XLSX_VERSION for $arch: $out"
}

main() {
    local which=${1:-all}
    fetch_source
    case "$which" in
        all) build_arch x64 && build_arch x86 ;;
        *) build_arch "$which" ;;
    esac
}

main "$@"
