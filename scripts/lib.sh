# Shared helpers of the README's commands (sourced by scripts/run.sh and
# scripts/test.sh). Works as root on a fresh Debian 12, non-interactively.

HB_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
HB_JOBS=${HB_JOBS:-2}
HB_LOGS="$HB_ROOT/build/logs"

# Debian packages the builds and tests need.
HB_PACKAGES=(cmake g++ make googletest libgtest-dev libgmock-dev libbenchmark-dev
             mingw-w64 mingw-w64-tools libwine-dev wine64 wine xvfb xauth)

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

# Configures a preset's build tree (again only when needed) and builds the
# given targets (all when none are given).
hb_build() {
    local preset=$1
    shift
    local dir targets=()
    dir=$(hb_build_dir "$preset")
    [ $# -gt 0 ] && targets=(--target "$@")
    hb_step "configure-$preset" cmake --preset "$preset" -B "$dir" || return 1
    hb_step "build-$preset" cmake --build "$dir" -j "$HB_JOBS" "${targets[@]}" || return 1
}

# A Linux path as Wine sees it (drive Z: is the root).
hb_winpath() { printf 'Z:%s' "$(printf '%s' "$1" | tr / '\\')"; }
