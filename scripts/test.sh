#!/usr/bin/env bash
# Every test: installs what is missing (Debian 12, as root), then
#   1. native (preset native: g++, ASan + UBSan): configure, build, ctest;
#   2. Windows x64 (preset win64, MinGW-w64): build, ctest under Wine;
#   3. Windows x86 (preset win32): compiled and linked only (Debian's
#      wine64 runs 64-bit programs only).
# Fails when any step fails; ends with a summary.
#
#   bash scripts/test.sh
set -uo pipefail
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
cd "$HB_ROOT" || exit 1

echo "Hourbook for Outlook v4: all tests"
hb_say "Debian packages"
hb_ensure_packages || exit 1

declare -A result
total_passed=0
total_failed=0

# run_ctest KEY PRESET: runs a preset's tests, shows their output, counts.
run_ctest() {
    local key=$1 preset=$2
    local log="$HB_LOGS/ctest-$preset.log"
    mkdir -p "$HB_LOGS"
    ctest --test-dir "$(hb_build_dir "$preset")" -j "$HB_JOBS" --output-on-failure \
        --no-tests=error </dev/null 2>&1 | tee "$log"
    local rc=${PIPESTATUS[0]}
    local line passed failed total
    line=$(grep -E '^[0-9]+% tests passed, [0-9]+ tests? failed out of [0-9]+' "$log" | tail -n 1)
    if [ -n "$line" ]; then
        failed=$(sed -E 's/.* ([0-9]+) tests? failed.*/\1/' <<<"$line")
        total=$(sed -E 's/.*out of ([0-9]+).*/\1/' <<<"$line")
        passed=$((total - failed))
    else
        passed=0
        failed=1
    fi
    [ $rc -ne 0 ] && [ "$failed" -eq 0 ] && failed=1
    total_passed=$((total_passed + passed))
    total_failed=$((total_failed + failed))
    if [ $rc -eq 0 ]; then
        result[$key]="$passed passed, $failed failed"
    else
        result[$key]="$passed passed, $failed failed (ctest exit $rc)"
    fi
    return $rc
}

hb_say "1/3 Native build and tests (preset native, ASan + UBSan)"
if hb_build native; then
    run_ctest native native
else
    result[native]="BUILD FAILED"
    total_failed=$((total_failed + 1))
fi

hb_say "2/3 Windows x64 build and tests under Wine (preset win64)"
if hb_build win64; then
    run_ctest win64 win64
    # The build tree's wineserver would leave by itself in a few seconds.
    WINEPREFIX="$(cd "$(hb_build_dir win64)" && pwd)/wineprefix" wineserver -k >/dev/null 2>&1
else
    result[win64]="BUILD FAILED"
    total_failed=$((total_failed + 1))
fi

hb_say "3/3 Windows x86 build, compiled and linked (preset win32)"
if hb_build win32; then
    result[win32]="built: build/win32/HBAddin.dll and the test programs (not run)"
else
    result[win32]="BUILD FAILED"
    total_failed=$((total_failed + 1))
fi

hb_say "Summary"
echo "   native tests (ASan/UBSan):        ${result[native]}"
echo "   Windows x64 tests under Wine:     ${result[win64]}"
echo "   Windows x86 build:                ${result[win32]}"
echo "total: $total_passed passed, $total_failed failed"
[ "$total_failed" -eq 0 ]
