#!/usr/bin/env bash
# Builds the libFuzzer targets (preset fuzz: clang, ASan + UBSan) and runs
# each over its seed corpus (fuzz/corpus/<target>, read only; what the run
# adds goes to <build>/corpus/<target>), one after the other, niced.
#
#   bash scripts/fuzz.sh                  # every target to 10 million executions
#   bash scripts/fuzz.sh --runs N         # every target to N executions
#   bash scripts/fuzz.sh --quick SECONDS  # every target for SECONDS (the test command's stage)
#   bash scripts/fuzz.sh [...] TARGET...  # only these (settings_body, metadata_list, ...)
#
# A finding (a crash, a sanitizer report, a broken property) fails its
# target; the input is saved in <build>/findings/<target>/. Ends with one
# line per target (executions, executions per second, coverage) and
# "fuzz total: N passed, M failed"; exits non-zero on any finding.
set -uo pipefail
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
cd "$HB_ROOT" || exit 1

runs=10000000
seconds=
targets=()
while [ $# -gt 0 ]; do
    case $1 in
    --quick) seconds=${2:?--quick needs a number of seconds}; shift 2 ;;
    --runs) runs=${2:?--runs needs a number}; shift 2 ;;
    -h | --help) sed -n '2,15p' "$0"; exit 0 ;;
    *) targets+=("${1%_fuzz}"); shift ;;
    esac
done
if [ ${#targets[@]} -eq 0 ]; then
    for d in fuzz/corpus/*/; do targets+=("$(basename "$d")"); done
fi

hb_ensure_packages || exit 1
hb_say "Building the fuzz targets (preset fuzz)"
hb_build fuzz hb_fuzz || exit 1
build=$(hb_build_dir fuzz)
case $build in /*) ;; *) build="$HB_ROOT/$build" ;; esac

# Options per target: the texts made of keywords get the dictionary; the
# phrase table is a whole UTF-16 resource and gets longer inputs.
options_for() {
    case $1 in
    settings_body | metadata_list | billing_markings | registry_text)
        echo "-dict=$HB_ROOT/fuzz/settings.dict -max_len=1024" ;;
    phrase_table) echo "-max_len=4096" ;;
    # The simulated Outlook keeps a weak reference to each object it made.
    long_property) echo "-max_len=1024 -detect_leaks=0" ;;
    *) echo "-max_len=1024" ;;
    esac
}

if [ -n "$seconds" ]; then
    hb_say "Fuzzing each target for $seconds s"
else
    hb_say "Fuzzing each target to $runs executions"
fi
mkdir -p "$HB_LOGS"
passed=0
failed=0
summary=()
for t in "${targets[@]}"; do
    exe="$build/${t}_fuzz"
    if [ ! -x "$exe" ] || [ ! -d "fuzz/corpus/$t" ]; then
        echo "   $t: no such target"
        failed=$((failed + 1))
        summary+=("$t: no such target")
        continue
    fi
    log="$HB_LOGS/fuzz-$t.log"
    mkdir -p "$build/corpus/$t" "$build/findings/$t"
    limit=(-runs="$runs")
    [ -n "$seconds" ] && limit=(-max_total_time="$seconds")
    # shellcheck disable=SC2046
    (cd "$build/findings/$t" &&
        nice -n 10 "$exe" $(options_for "$t") "${limit[@]}" -timeout=10 -rss_limit_mb=2048 \
            -print_final_stats=1 -artifact_prefix="$build/findings/$t/" \
            "$build/corpus/$t" "$HB_ROOT/fuzz/corpus/$t") >"$log" 2>&1 </dev/null
    rc=$?
    execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
    speed=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -n 1)
    cov=$(grep -oE 'cov: [0-9]+ ft: [0-9]+' "$log" | tail -n 1)
    line="$t: ${execs:-?} executions, ${speed:-?} exec/s, ${cov:-cov: ?}"
    if [ $rc -eq 0 ]; then
        passed=$((passed + 1))
        line="$line, no finding"
    else
        failed=$((failed + 1))
        line="$line, FINDING (exit $rc, log build/logs/fuzz-$t.log, input in $build/findings/$t/)"
        grep -E 'PROPERTY BROKEN|detail:|ERROR: (Address|Undefined|libFuzzer)|runtime error|SUMMARY' "$log" |
            head -n 8 | sed 's/^/     | /'
    fi
    echo "   $line"
    summary+=("$line")
done

hb_say "Fuzz summary"
printf '   %s\n' "${summary[@]}"
echo "fuzz total: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
