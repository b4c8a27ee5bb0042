#!/usr/bin/env bash
# Runs every test of TAXOR:
#   1. build/       the normal build (RelWithDebInfo, warnings are errors) and its ctest;
#   2. build-asan/  the same code under AddressSanitizer + UBSan and its ctest (the tests
#                   that run python3 with ezdxf skip themselves there);
#   3. build-tsan/  taxor_thread_tests alone under ThreadSanitizer, and its ctest;
#   4. build-fuzz/  the libFuzzer build (clang), and 45 s of each fuzz target
#                   (scripts/fuzz.sh --list), each counted as one test.
# Every build compiles through ccache when it is installed (CMakeLists.txt), so a second run
# on the same machine recompiles little. Every stage runs even when an earlier one failed.
# The last line is "N passed, N failed": the ctest results of the builds plus each fuzz
# target as one test. A stage that cannot run
# (configure or build error, no tests found) counts as one failed test. Exits non-zero if
# anything failed.
set -uo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# Per fuzz target; four targets keep the fuzzing of a run near three minutes.
FUZZ_SECONDS=45

PASSED=0
FAILED=0
SKIPPED=0
FAILURES=()
START=$SECONDS
STAGE_START=$SECONDS
STAGE_NAME=
STAGE_TIMES=()

# stage NAME: starts the next stage; the time of each is listed at the end.
stage() {
  stage_done
  STAGE_NAME=$*
  STAGE_START=$SECONDS
  printf '\n=== %s ===\n' "$*"
}
stage_done() {
  [[ -n $STAGE_NAME ]] &&
    STAGE_TIMES+=("$(printf '%3dm %02ds  %s' $(((SECONDS - STAGE_START) / 60)) \
      $(((SECONDS - STAGE_START) % 60)) "$STAGE_NAME")")
  STAGE_NAME=
}
fail() {  # fail WHAT: one failed test that is not a ctest result
  FAILED=$((FAILED + 1))
  FAILURES+=("$1")
  echo "test.sh: FAILED: $1" >&2
}
finish() {
  stage_done
  echo
  echo "test.sh: stage times:"
  printf '  %s\n' "${STAGE_TIMES[@]}"
  if command -v ccache >/dev/null 2>&1; then
    echo "test.sh: ccache: $(ccache --print-stats 2>/dev/null |
      awk -F'\t' '$1 ~ /^(direct_cache_hit|preprocessed_cache_hit)$/ { h += $2 }
                  $1 == "cache_miss" { m = $2 } END { print h + 0 " hits, " m + 0 " misses" }')"
  fi
  if [[ ${#FAILURES[@]} -gt 0 ]]; then
    echo "test.sh: failures:"
    printf '  %s\n' "${FAILURES[@]}"
  fi
  [[ $SKIPPED -gt 0 ]] && echo "test.sh: $SKIPPED skipped (not counted as passed)"
  echo "test.sh: finished in $(( (SECONDS - START) / 60 ))m $(( (SECONDS - START) % 60 ))s"
  echo "$PASSED passed, $FAILED failed"
  [[ $FAILED -eq 0 ]]
  exit
}

# run_ctest DIR [CTEST_ARGS...]: runs the tests of a build and adds its results to the totals.
run_ctest() {
  local dir=$1 log="$1/ctest.log"
  shift
  ctest --test-dir "$dir" --output-on-failure -j2 --no-tests=error --timeout 900 "$@" 2>&1 |
    tee "$log"
  local rc=${PIPESTATUS[0]}
  # "95% tests passed, 2 tests failed out of 40": skipped tests are inside the 95%.
  local summary
  summary=$(grep -E '^[0-9]+% tests passed, [0-9]+ tests? failed out of [0-9]+' "$log" | tail -n 1)
  if [[ -z $summary ]]; then
    fail "$dir: ctest ran no test (exit code $rc)"
    return
  fi
  local failed total skipped
  failed=$(sed -E 's/.* ([0-9]+) tests? failed out of.*/\1/' <<<"$summary")
  total=$(sed -E 's/.* failed out of ([0-9]+).*/\1/' <<<"$summary")
  skipped=$(grep -cE '^[[:space:]]+[0-9]+ - .* \(Skipped\)$' "$log")
  PASSED=$((PASSED + total - failed - skipped))
  FAILED=$((FAILED + failed))
  SKIPPED=$((SKIPPED + skipped))
  [[ $failed -gt 0 ]] && FAILURES+=("$dir: $failed of $total tests failed (see $log)")
  if [[ $rc -ne 0 && $failed -eq 0 ]]; then
    fail "$dir: ctest exited with $rc"
  fi
}

# configure_and_build DIR [TARGETS] -- CMAKE_ARGS... (TARGETS: names separated by blanks)
configure_and_build() {
  local dir=$1 target=$2
  shift 3
  cmake -S . -B "$dir" -G Ninja "$@" || return 1
  if [[ -n $target ]]; then
    # shellcheck disable=SC2086  # TARGET may name several targets
    cmake --build "$dir" --target $target
  else
    cmake --build "$dir"
  fi
}

stage "setup"
if ! bash scripts/setup-debian.sh; then
  fail "scripts/setup-debian.sh"
  finish
fi
# Counts this run's hits and misses only; the cache itself stays.
command -v ccache >/dev/null 2>&1 && ccache --zero-stats >/dev/null

stage "build/ (RelWithDebInfo, -Werror)"
if configure_and_build build "" -- -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTAXOR_WERROR=ON \
    -DTAXOR_SANITIZE=OFF -DTAXOR_FUZZ=OFF -DTAXOR_BENCH=ON; then
  stage "build/ ctest"
  run_ctest build
else
  fail "build/: configure or build"
fi

stage "build-asan/ (AddressSanitizer + UBSan)"
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:strict_string_checks=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1}"
if configure_and_build build-asan "" -- -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTAXOR_SANITIZE=ON \
    -DTAXOR_FUZZ=OFF -DTAXOR_BENCH=OFF; then
  stage "build-asan/ ctest"
  run_ctest build-asan
else
  fail "build-asan/: configure or build"
fi

stage "build-tsan/ (ThreadSanitizer, taxor_thread_tests only)"
if configure_and_build build-tsan taxor_thread_tests -- -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DTAXOR_TSAN=ON -DTAXOR_SANITIZE=OFF -DTAXOR_FUZZ=OFF -DTAXOR_BENCH=OFF; then
  stage "build-tsan/ ctest"
  # The other test binaries are not built here: only the tests labelled "threads" run.
  # A data race or lock-order report stops the test at once and fails it.
  TSAN_OPTIONS="${TSAN_OPTIONS:-halt_on_error=1 second_deadlock_stack=1}" \
    run_ctest build-tsan -L '^threads$'
else
  fail "build-tsan/: configure or build"
fi

stage "build-fuzz/ (clang, libFuzzer)"
# A build directory first configured with another compiler keeps it: start that one afresh.
if [[ -f build-fuzz/CMakeCache.txt ]] &&
    ! grep -qE '^CMAKE_CXX_COMPILER:[A-Z]+=.*clang\+\+' build-fuzz/CMakeCache.txt; then
  rm -rf build-fuzz
fi
FUZZ_TARGETS=$(bash scripts/fuzz.sh --list)
# shellcheck disable=SC2086
if CC=clang CXX=clang++ configure_and_build build-fuzz "$(printf '%s_fuzzer ' $FUZZ_TARGETS)" -- \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTAXOR_FUZZ=ON -DTAXOR_SANITIZE=OFF -DTAXOR_BENCH=OFF; then
  # Each target is one test. Each starts from the committed seeds (and the small corpus
  # drawings), in a working corpus dropped afterwards: a run does not lean on earlier ones.
  fuzz_work=$(mktemp -d)
  trap 'rm -rf "$fuzz_work"' EXIT
  for target in $FUZZ_TARGETS; do
    stage "${target}_fuzzer for ${FUZZ_SECONDS}s"
    if bash scripts/fuzz.sh --no-build --build-dir build-fuzz --corpus "$fuzz_work" \
        "$FUZZ_SECONDS" "$target"; then
      PASSED=$((PASSED + 1))
    else
      tail -n 60 "build-fuzz/logs/$target.log"
      fail "${target}_fuzzer (full log build-fuzz/logs/$target.log; inputs kept in build-fuzz/artifacts/$target/)"
    fi
  done
else
  fail "build-fuzz/: configure or build"
fi

finish
