#!/usr/bin/env bash
# Line and branch coverage of the portable add-in code (src/) by the native
# tests. Builds the native preset with --coverage (no sanitizers) in its own
# tree, runs ctest there and prints the totals and one line per area.
#
#   bash scripts/coverage.sh              # build tree build/coverage
#   HB_BUILD_DIR_coverage=build/cov-x bash scripts/coverage.sh
#
# src/win and src/platform/win32 are left out: only the Windows builds
# compile them. Branches the compiler adds for exception unwinding and
# branches it proves unreachable are not counted (they are not decisions in
# the code). A JSON summary per file is left in <tree>/coverage.json.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
cd "$HB_ROOT"

HB_PACKAGES=(cmake g++ make googletest libgtest-dev libgmock-dev gcovr
             postgresql odbc-postgresql unixodbc unixodbc-dev)
hb_ensure_packages

dir=$(hb_build_dir coverage)
hb_say "Building the native tests with coverage in $dir"
hb_step coverage-configure cmake --preset native -B "$dir" -DHB_SANITIZE=OFF \
    -DCMAKE_CXX_FLAGS=--coverage -DCMAKE_EXE_LINKER_FLAGS=--coverage
hb_step coverage-build cmake --build "$dir" -j "$HB_JOBS"

# Counters of an earlier run would add up with this one's.
find "$dir" -name '*.gcda' -delete
hb_say "Running the native tests"
rc=0
hb_step coverage-ctest ctest --test-dir "$dir" -j "$HB_JOBS" --output-on-failure || rc=$?

hb_say "Coverage of src/ (without src/win and src/platform/win32)"
gcovr_args=(--root "$HB_ROOT" --object-directory "$dir" --filter 'src/'
            --exclude 'src/win/' --exclude 'src/platform/win32/'
            --exclude-directories '.*/CMakeFiles/[0-9.]+$'
            --exclude-throw-branches --exclude-unreachable-branches)
gcovr "${gcovr_args[@]}" --json-summary-pretty --json-summary "$dir/coverage.json" >/dev/null
python3 - "$dir/coverage.json" <<'EOF'
import json, sys
files = json.load(open(sys.argv[1]))["files"]
areas = {}
def add(key, f):
    a = areas.setdefault(key, [0, 0, 0, 0])
    a[0] += f["line_covered"]; a[1] += f["line_total"]
    a[2] += f["branch_covered"]; a[3] += f["branch_total"]
for f in files:
    parts = f["filename"].split("/")
    add("/".join(parts[:2]), f)
    add("total", f)
def pct(c, t):
    return f"{100.0 * c / t:5.1f}%" if t else "   - "
print(f"{'area':<22}{'lines':>18}{'':>8}{'branches':>16}")
for key in sorted(k for k in areas if k != "total") + ["total"]:
    lc, lt, bc, bt = areas[key]
    print(f"{key:<22}{lc:>8}/{lt:<8} {pct(lc, lt)}   {bc:>6}/{bt:<6} {pct(bc, bt)}")
EOF
if [ "$rc" -ne 0 ]; then
    echo "note: some tests failed (see build/logs/coverage-ctest.log); the figures cover the run as it went" >&2
fi
exit "$rc"
