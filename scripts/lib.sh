# Shared helpers of the README's commands (sourced by scripts/run.sh and
# scripts/test.sh). Works as root on a fresh Debian 12, non-interactively.

HB_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
HB_JOBS=${HB_JOBS:-2}
HB_LOGS="$HB_ROOT/build/logs"

# Debian packages the builds and tests need.
HB_PACKAGES=(cmake g++ make googletest libgtest-dev libgmock-dev libbenchmark-dev
             clang-14 libclang-rt-14-dev
             mingw-w64 mingw-w64-tools libwine-dev wine64 wine xvfb xauth debootstrap imagemagick
             wixl
             libxlsxwriter-dev libz-mingw-w64-dev python3-openpyxl
             postgresql odbc-postgresql unixodbc unixodbc-dev)

hb_say() { printf '\n==> %s\n' "$*"; }

# Installs the packages that are missing (apt-get update only then).
hb_ensure_packages() {
    local missing=() p
    for p in "${HB_PACKAGES[@]}"; do
        if ! dpkg-query -W -f='${Status}\n' "$p" 2>/dev/null | grep -q '^install ok installed$'; then
            missing+=("$p")
        fi
    done
    if [ ${#missing[@]} -eq 0 ]; then
        echo "All needed Debian packages are installed."
        return 0
    fi
    hb_say "Installing missing Debian packages: ${missing[*]}"
    local sudo=()
    if [ "$(id -u)" != 0 ]; then
        if command -v sudo >/dev/null 2>&1; then
            sudo=(sudo -n)
        else
            echo "error: not root and no sudo; install as root: apt-get install ${missing[*]}" >&2
            return 1
        fi
    fi
    export DEBIAN_FRONTEND=noninteractive
    "${sudo[@]}" apt-get update -q </dev/null || return 1
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q \
        -o Dpkg::Options::=--force-confdef -o Dpkg::Options::=--force-confold \
        "${missing[@]}" </dev/null || return 1
}

# hb_step NAME COMMAND...: runs a build step with its output in a log file;
# on failure prints the log's end. Returns the command's status.
hb_step() {
    local name=$1
    shift
    mkdir -p "$HB_LOGS"
    local log="$HB_LOGS/$name.log"
    local start=$SECONDS
    local rc=0
    "$@" >"$log" 2>&1 </dev/null || rc=$?
    if [ "$rc" -eq 0 ]; then
        echo "   $name: ok ($((SECONDS - start)) s, log build/logs/$name.log)"
        return 0
    fi
    echo "   $name: FAILED (exit $rc), last lines of build/logs/$name.log:"
    tail -n 60 "$log" | sed 's/^/     | /'
    return $rc
}

# The build tree of a preset: build/<preset>; HB_BUILD_DIR_<preset> (for
# example HB_BUILD_DIR_native=build/native-x) puts it elsewhere.
hb_build_dir() {
    local var="HB_BUILD_DIR_$1"
    printf '%s' "${!var:-build/$1}"
}

# hb_configure PRESET [CMAKE-ARG]...: configures a preset's build tree.
hb_configure() {
    local preset=$1
    shift
    hb_step "configure-$preset" cmake --preset "$preset" -B "$(hb_build_dir "$preset")" "$@"
}

# hb_compile PRESET [TARGET]...: builds the given targets (all when none are
# given) in a configured build tree.
hb_compile() {
    local preset=$1
    shift
    local targets=()
    [ $# -gt 0 ] && targets=(--target "$@")
    hb_step "build-$preset" cmake --build "$(hb_build_dir "$preset")" -j "$HB_JOBS" "${targets[@]}"
}

# hb_build PRESET [TARGET]...: configures (the build tool configures again
# only when needed) and builds.
hb_build() {
    local preset=$1
    shift
    hb_configure "$preset" && hb_compile "$preset" "$@"
}

# A Linux path as Wine sees it (drive Z: is the root).
hb_winpath() { printf 'Z:%s' "$(printf '%s' "$1" | tr / '\\')"; }

# ---------------------------------------------------------------- Wine's 32-bit side
# Debian's wine64 runs 64-bit programs only. The x86 DLL and test programs
# run either under i386 multiarch Wine (wine32:i386 next to wine64) or, when
# that cannot be installed (it needs the i386 index of every suite the amd64
# packages come from, the security suite included), under the Wine of an
# i386 Debian root, which needs only the main suite. The root is kept in
# HB_X86_ROOT for the next run on the same machine; a file in it marks it
# complete. HB_X86_WINE=auto (default: multiarch, else the root), multiarch,
# root or none chooses.
HB_X86_ROOT=${HB_X86_ROOT:-/var/cache/hourbook/i386-root}
HB_X86_ROOT_READY=.hb-root-ready
HB_X86_ROOT_PACKAGES=(wine xvfb xauth)

hb_wine32_installed() {
    [ -x /usr/lib/wine/wine ] &&
        dpkg-query -W -f='${Status}\n' wine32:i386 2>/dev/null | grep -q '^install ok installed$'
}

hb_x86_root_ready() { [ -f "$HB_X86_ROOT/$HB_X86_ROOT_READY" ]; }

# apt-get that waits for another apt or dpkg to finish instead of failing.
hb_apt_get() {
    DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=300 \
        -o Dpkg::Options::=--force-confdef -o Dpkg::Options::=--force-confold "$@" </dev/null
}

# Installs wine32:i386 through i386 multiarch. When that fails, an i386
# architecture this call added is removed again (unless an i386 package got
# installed), so that the next apt-get update does not fail on its index.
hb_install_wine32() {
    if hb_wine32_installed; then
        echo "wine32:i386 is installed."
        return 0
    fi
    local added=0
    if ! dpkg --print-foreign-architectures | grep -qx i386; then
        dpkg --add-architecture i386 || return 1
        added=1
    fi
    # A failed update may still leave indexes that suffice: the install decides.
    hb_apt_get update || echo "apt-get update failed; trying the install all the same."
    if hb_apt_get install -y --no-install-recommends wine32:i386 && hb_wine32_installed; then
        return 0
    fi
    if [ $added = 1 ] && ! dpkg-query -W -f='${Package}:${Architecture} ${Status}\n' 2>/dev/null |
        grep -q ':i386 .* installed$'; then
        echo "Removing the i386 architecture again."
        dpkg --remove-architecture i386 || true
    fi
    return 1
}

# The URI of the machine's Debian mirror for its release's main suite, read
# from its apt sources (one-line and deb822 forms).
hb_debian_mirror() {
    local codename f
    codename=$(. /etc/os-release && printf '%s' "${VERSION_CODENAME:-}")
    [ -n "$codename" ] || return 1
    for f in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -f "$f" ] || continue
        awk -v s="$codename" '$1 == "deb" {
            i = 2; if ($i ~ /^\[/) { while ($i !~ /\]$/) i++; i++ }
            if ($(i + 1) == s) { print $i; exit } }' "$f"
    done
    for f in /etc/apt/sources.list.d/*.sources; do
        [ -f "$f" ] || continue
        awk -v s="$codename" -v RS= -F '\n' '{
            types = uris = suites = ""; enabled = 1
            for (i = 1; i <= NF; i++) {
                if ($i ~ /^Types:/) types = " " substr($i, 7) " "
                else if ($i ~ /^URIs:/) { split(substr($i, 6), u, " "); uris = u[1] }
                else if ($i ~ /^Suites:/) suites = " " substr($i, 8) " "
                else if ($i ~ /^Enabled: *no/) enabled = 0
            }
            gsub(/[ \t]+/, " ", types); gsub(/[ \t]+/, " ", suites)
            if (enabled && types ~ / deb / && suites ~ (" " s " ") && uris != "") { print uris; exit }
        }' "$f"
    done | head -n 1 | grep .
}

# hb_in_x86_root COMMAND...: runs a command inside the i386 root.
hb_in_x86_root() { bash "$HB_ROOT/scripts/x86-root.sh" "$HB_X86_ROOT" -- "$@"; }

# Makes the i386 Debian root with Wine in HB_X86_ROOT, unless a complete one
# is there.
hb_make_x86_root() {
    if hb_x86_root_ready; then
        echo "Reusing the i386 Debian root $HB_X86_ROOT ($(cat "$HB_X86_ROOT/$HB_X86_ROOT_READY"))."
        return 0
    fi
    local codename mirror
    codename=$(. /etc/os-release && printf '%s' "${VERSION_CODENAME:-}")
    mirror=${HB_X86_MIRROR:-$(hb_debian_mirror)} ||
        { echo "No Debian mirror for '$codename' in the apt sources." >&2; return 1; }
    command -v debootstrap >/dev/null || { echo "debootstrap is missing." >&2; return 1; }
    # An incomplete root from an earlier try is made afresh; debootstrap's own
    # mounts stay in a private namespace, so none can be below it.
    if findmnt -rn -o TARGET | grep -q "^$HB_X86_ROOT\(/\|\$\)"; then
        echo "Something is mounted below $HB_X86_ROOT; not touching it." >&2
        return 1
    fi
    rm -rf "$HB_X86_ROOT"
    mkdir -p "$(dirname "$HB_X86_ROOT")"
    echo "debootstrap $codename (i386) from $mirror into $HB_X86_ROOT"
    unshare --mount --propagation private -- debootstrap --variant=minbase --arch=i386 \
        "$codename" "$HB_X86_ROOT" "$mirror" </dev/null || return 1
    cp /etc/resolv.conf "$HB_X86_ROOT/etc/resolv.conf" 2>/dev/null || true
    hb_in_x86_root env DEBIAN_FRONTEND=noninteractive apt-get -q update </dev/null || return 1
    hb_in_x86_root env DEBIAN_FRONTEND=noninteractive apt-get -q install -y --no-install-recommends \
        "${HB_X86_ROOT_PACKAGES[@]}" </dev/null || return 1
    hb_in_x86_root apt-get clean </dev/null || true
    hb_in_x86_root test -x /usr/lib/wine/wine || { echo "No Wine in the i386 root." >&2; return 1; }
    printf 'Debian %s i386 from %s, %s\n' "$codename" "$mirror" "$(date -u '+%F %T UTC')" \
        >"$HB_X86_ROOT/$HB_X86_ROOT_READY"
}

# Provides an x86 Wine. Sets HB_X86_WINE_MODE to multiarch, root or none and,
# for none, HB_X86_WINE_WHY; returns non-zero for none. Each way's output goes
# to a log in build/logs.
hb_x86_wine() {
    local want=${HB_X86_WINE:-auto} multiarch_why=""
    HB_X86_WINE_MODE=none
    HB_X86_WINE_WHY=""
    case $want in
    auto | multiarch | root) ;;
    none)
        HB_X86_WINE_WHY="HB_X86_WINE=none"
        return 1
        ;;
    *)
        HB_X86_WINE_WHY="HB_X86_WINE=$want is not auto, multiarch, root or none"
        return 1
        ;;
    esac
    if [ "$(id -u)" != 0 ]; then
        HB_X86_WINE_WHY="installing Wine's 32-bit side needs root"
        hb_wine32_installed && [ "$want" != root ] && HB_X86_WINE_MODE=multiarch
        [ "$HB_X86_WINE_MODE" = none ] && return 1
        return 0
    fi
    if [ "$want" != root ]; then
        if hb_step x86-wine-multiarch hb_install_wine32; then
            HB_X86_WINE_MODE=multiarch
            return 0
        fi
        multiarch_why="wine32:i386 could not be installed (build/logs/x86-wine-multiarch.log)"
        if [ "$want" = multiarch ]; then
            HB_X86_WINE_WHY=$multiarch_why
            return 1
        fi
    fi
    if hb_step x86-wine-root hb_make_x86_root; then
        HB_X86_WINE_MODE=root
        return 0
    fi
    HB_X86_WINE_WHY="${multiarch_why:+$multiarch_why; }no i386 Debian root (build/logs/x86-wine-root.log)"
    return 1
}

# Starts an Xvfb on a free display for the Windows programs that show windows
# and message boxes, exports HB_WINE_DISPLAY for wine-run.sh, and stops it
# when the calling script exits. Without Xvfb those tests skip.
hb_start_display() {
    command -v Xvfb >/dev/null 2>&1 || return 1
    local n
    for n in $(seq 90 120); do
        [ -e "/tmp/.X11-unix/X$n" ] || [ -e "/tmp/.X$n-lock" ] && continue
        Xvfb ":$n" -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
        HB_XVFB_PID=$!
        local i
        for i in $(seq 1 50); do
            [ -e "/tmp/.X11-unix/X$n" ] && break
            sleep 0.1
        done
        if kill -0 "$HB_XVFB_PID" 2>/dev/null; then
            export HB_WINE_DISPLAY=":$n"
            trap 'kill "$HB_XVFB_PID" 2>/dev/null' EXIT
            return 0
        fi
    done
    return 1
}
