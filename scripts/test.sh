#!/usr/bin/env bash
# Every test: installs what is missing (Debian 12, as root), then
#   1. native (preset native: g++, ASan + UBSan): configure, build, ctest;
#      then every fuzz target for a short while (scripts/fuzz.sh --quick);
#   2. Windows x64 (preset win64, MinGW-w64): build, ctest under Wine;
#   3. Windows x86 (preset win32): build, ctest under Wine's 32-bit side,
#      i386 multiarch (wine32:i386) or else an i386 Debian root made with
#      debootstrap (HB_X86_WINE=multiarch, root or none forces a way); when
#      neither can be installed the tests are reported as not run.
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

# Every fuzz target briefly (scripts/fuzz.sh --quick; a finding fails it).
hb_say "Fuzz targets (preset fuzz: libFuzzer, ASan + UBSan, ${HB_FUZZ_SECONDS:-25} s each)"
fuzz_log="$HB_LOGS/fuzz-quick.log"
bash scripts/fuzz.sh --quick "${HB_FUZZ_SECONDS:-25}" 2>&1 | tee "$fuzz_log"
fuzz_line=$(grep -E '^fuzz total: [0-9]+ passed, [0-9]+ failed' "$fuzz_log" | tail -n 1)
if [ -n "$fuzz_line" ]; then
    fuzz_passed=$(sed -E 's/.*: ([0-9]+) passed.*/\1/' <<<"$fuzz_line")
    fuzz_failed=$(sed -E 's/.* ([0-9]+) failed.*/\1/' <<<"$fuzz_line")
    result[fuzz]="$fuzz_passed passed, $fuzz_failed failed"
else
    fuzz_passed=0
    fuzz_failed=1
    result[fuzz]="BUILD FAILED"
fi
total_passed=$((total_passed + fuzz_passed))
total_failed=$((total_failed + fuzz_failed))

hb_start_display || echo "   (no Xvfb: the Windows tests that show windows skip)"

# Third-party libraries the Windows builds link, built from Debian's source
# packages once and kept in build/third_party (libxlsxwriter for the
# report's XLSX export).
hb_say "Third-party libraries for the Windows builds"
if ! hb_step third-party-xlsxwriter bash scripts/xlsxwriter.sh all; then
    echo "   (the Windows builds leave the XLSX export and its test out)"
    total_failed=$((total_failed + 1))
fi

hb_say "2/3 Windows x64 build and tests under Wine (preset win64)"
if hb_build win64; then
    run_ctest win64 win64
    # The build tree's wineserver would leave by itself in a few seconds.
    "$(hb_build_dir win64)/wine-run.sh" --stop
else
    result[win64]="BUILD FAILED"
    total_failed=$((total_failed + 1))
fi

hb_say "3/3 Windows x86 build and tests under Wine (preset win32)"
# Wine's 32-bit side: multiarch wine32, else an i386 Debian root. When neither
# can be installed (a mirror out of sync, no network), the x86 programs are
# still built and their tests reported as not run, without failing the run.
x86_how="not run"
if hb_x86_wine; then
    case $HB_X86_WINE_MODE in
    multiarch) x86_how="multiarch wine32" ;;
    root) x86_how="i386 Debian root" ;;
    esac
fi
if hb_configure win32 -DHB_WINE_MODE="$HB_X86_WINE_MODE" && hb_compile win32; then
    if [ "$HB_X86_WINE_MODE" = none ]; then
        result[win32]="not run: $HB_X86_WINE_WHY (built: $(hb_build_dir win32)/HBAddin.dll and the test programs)"
    else
        run_ctest win32 win32
        "$(hb_build_dir win32)/wine-run.sh" --stop
    fi
else
    result[win32]="BUILD FAILED"
    total_failed=$((total_failed + 1))
fi

hb_say "Summary"
echo "   native tests (ASan/UBSan):        ${result[native]}"
echo "   fuzz targets (libFuzzer):         ${result[fuzz]}"
echo "   Windows x64 tests under Wine:     ${result[win64]}"
if [ "$x86_how" = "not run" ]; then
    echo "   Windows x86 tests:                ${result[win32]}"
else
    echo "   Windows x86 tests under Wine ($x86_how): ${result[win32]}"
fi
echo "total: $total_passed passed, $total_failed failed"
[ "$total_failed" -eq 0 ]
