#!/usr/bin/env bash
# Runs the libFuzzer targets of fuzz/ for as long as asked; see usage below.
set -uo pipefail
# The whole script is one block, read before it runs: editing the file while a long run goes
# on does not change what that run does.
{
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 3
ROOT=$(pwd)
TARGETS=(dxf_reader class_file command_session dxf_writer)
# Targets that read drawings get the small real drawings beside the repository as extra seeds.
DRAWING_TARGETS=" dxf_reader dxf_writer "
CORPUS_DRAWINGS="$ROOT/../shared/corpus/dxf"

usage() {
  cat <<EOF
Usage: scripts/fuzz.sh [OPTIONS] SECONDS [TARGET...]
       scripts/fuzz.sh --minimize-seeds [TARGET...]
       scripts/fuzz.sh --list

Fuzzes each TARGET (default: all of them: ${TARGETS[*]}) for SECONDS seconds, after
building its fuzzer in the build directory when it is missing or out of date. Each target
starts from fuzz/seeds/TARGET/ (and, for the drawing targets, the drawings under 50 KB in
$CORPUS_DRAWINGS) and keeps what it learns in BUILD/corpus/TARGET/, so that the next run
goes on from there. An input that fails is kept in BUILD/artifacts/TARGET/; replay it with
  BUILD/fuzz/TARGET_fuzzer BUILD/artifacts/TARGET/crash-...
At the end a table gives per target: executions, executions per second, coverage (cov:
edges, ft: features), peak RSS and findings. Logs are in BUILD/logs/TARGET.log.

Options:
  --jobs N         fuzz N targets at a time (default 1)
  --build-dir DIR  the libFuzzer build directory (default build-fuzz; configured with clang
                   and -DTAXOR_FUZZ=ON when it does not exist)
  --corpus DIR     keep the working corpora in DIR/TARGET/ instead of BUILD/corpus/TARGET/
  --no-build       use the fuzzers as built
  --minimize-seeds merge fuzz/seeds/TARGET/ and the candidates of fuzz/make_seeds.py into a
                   minimal set (libFuzzer -merge=1) that replaces fuzz/seeds/TARGET/
  --list           print the target names
  -h, --help       this text

Exit codes: 0 no finding, 1 a target found something (or crashed), 2 bad usage,
3 the build failed.
EOF
}

JOBS=1
BUILD=build-fuzz
CORPUS=
BUILD_IT=1
MINIMIZE=0
SECONDS_ASKED=
ASKED=()
while [[ $# -gt 0 ]]; do
  case $1 in
    -h | --help) usage; exit 0 ;;
    --list) printf '%s\n' "${TARGETS[@]}"; exit 0 ;;
    --jobs) JOBS=${2:-}; shift ;;
    --build-dir) BUILD=${2:-}; shift ;;
    --corpus) CORPUS=${2:-}; shift ;;
    --no-build) BUILD_IT=0 ;;
    --minimize-seeds) MINIMIZE=1 ;;
    -*) echo "fuzz.sh: unknown option $1 (see --help)" >&2; exit 2 ;;
    *)
      if [[ -z $SECONDS_ASKED && $MINIMIZE -eq 0 ]]; then
        SECONDS_ASKED=$1
      else
        ASKED+=("$1")
      fi
      ;;
  esac
  shift
done
if [[ $MINIMIZE -eq 0 && ! $SECONDS_ASKED =~ ^[1-9][0-9]*$ ]]; then
  echo "fuzz.sh: SECONDS must be a positive number of seconds, not '${SECONDS_ASKED}' (see --help)" >&2
  exit 2
fi
if [[ ! $JOBS =~ ^[1-9][0-9]*$ || -z $BUILD ]]; then
  echo "fuzz.sh: --jobs needs a positive number and --build-dir a folder (see --help)" >&2
  exit 2
fi
[[ ${#ASKED[@]} -eq 0 ]] && ASKED=("${TARGETS[@]}")
for target in "${ASKED[@]}"; do
  if [[ " ${TARGETS[*]} " != *" $target "* ]]; then
    echo "fuzz.sh: no target '$target'; the targets are: ${TARGETS[*]}" >&2
    exit 2
  fi
done
CORPUS=${CORPUS:-$BUILD/corpus}

if [[ $BUILD_IT -eq 1 ]]; then
  # A directory configured with another compiler keeps it: only a fresh one is configured.
  if [[ ! -f $BUILD/CMakeCache.txt ]]; then
    CC=clang CXX=clang++ cmake -S . -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
      -DTAXOR_FUZZ=ON -DTAXOR_SANITIZE=OFF -DTAXOR_BENCH=OFF >/dev/null || exit 3
  fi
  if ! grep -q '^TAXOR_FUZZ:BOOL=ON' "$BUILD/CMakeCache.txt"; then
    echo "fuzz.sh: $BUILD is not a libFuzzer build (-DTAXOR_FUZZ=ON with clang)" >&2
    exit 3
  fi
  cmake --build "$BUILD" -j2 --target "${ASKED[@]/%/_fuzzer}" || exit 3
fi

WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
# The small real drawings, copied once: they stay outside the repository.
mkdir -p "$WORK/drawings"
if [[ -d $CORPUS_DRAWINGS ]]; then
  find "$CORPUS_DRAWINGS" -maxdepth 1 -type f -iname '*.dxf' -size -50k \
    -exec cp {} "$WORK/drawings/" \;
fi

# fuzzer_args TARGET: the options every run of TARGET shares.
fuzzer_args() {
  local dict="fuzz/dicts/$1.dict"
  [[ -f $dict ]] && echo "-dict=$dict"
  echo "-timeout=30"
}

minimize() {
  local target=$1 fuzzer="$BUILD/fuzz/$1_fuzzer"
  [[ -d "$WORK/candidates" ]] || python3 fuzz/make_seeds.py "$WORK/candidates" || exit 3
  mkdir -p "$WORK/merged/$target" "fuzz/seeds/$target" "$BUILD/artifacts/$target"
  local inputs=("fuzz/seeds/$target")
  [[ -d "$WORK/candidates/$target" ]] && inputs+=("$WORK/candidates/$target")
  # shellcheck disable=SC2046
  if ! "$fuzzer" -merge=1 -artifact_prefix="$BUILD/artifacts/$target/" $(fuzzer_args "$target") \
      "$WORK/merged/$target" "${inputs[@]}" >"$WORK/$target.merge.log" 2>&1; then
    tail -n 30 "$WORK/$target.merge.log"
    echo "fuzz.sh: $target: the merge failed" >&2
    return 1
  fi
  rm -f "fuzz/seeds/$target"/*
  cp "$WORK/merged/$target"/* "fuzz/seeds/$target/"
  echo "fuzz.sh: $target: $(find "fuzz/seeds/$target" -type f | wc -l) seeds," \
    "$(du -sk "fuzz/seeds/$target" | cut -f1) KB in fuzz/seeds/$target/"
}

if [[ $MINIMIZE -eq 1 ]]; then
  status=0
  for target in "${ASKED[@]}"; do minimize "$target" || status=1; done
  exit $status
fi

# run TARGET: fuzzes it for SECONDS_ASKED; its exit code is the fuzzer's.
run() {
  local target=$1 fuzzer="$BUILD/fuzz/$1_fuzzer"
  local log="$BUILD/logs/$target.log" artifacts="$BUILD/artifacts/$target/"
  mkdir -p "$CORPUS/$target" "$artifacts" "$BUILD/logs"
  local inputs=("$CORPUS/$target" "fuzz/seeds/$target")
  [[ $DRAWING_TARGETS == *" $target "* ]] && inputs+=("$WORK/drawings")
  # shellcheck disable=SC2046
  "$fuzzer" -max_total_time="$SECONDS_ASKED" -print_final_stats=1 \
    -artifact_prefix="$artifacts" $(fuzzer_args "$target") "${inputs[@]}" >"$log" 2>&1
}

# stats TARGET CODE: one line of the table from the target's log.
stats() {
  local target=$1 code=$2 log="$BUILD/logs/$1.log"
  local runs rate rss cov findings
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
  rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -n 1)
  rss=$(sed -n 's/^stat::peak_rss_mb: *//p' "$log" | tail -n 1)
  cov=$(grep -oE 'cov: [0-9]+ ft: [0-9]+' "$log" | tail -n 1)
  findings=$(grep -cE '^artifact_prefix=.*Test unit written to' "$log")
  printf '%-16s %12s %8s  %-22s %7s MB  %s\n' "$target" "${runs:-?}" "${rate:-?}" \
    "${cov:-?}" "${rss:-?}" "$([[ $code -eq 0 ]] && echo none || echo "$findings (exit $code)")"
}

echo "fuzz.sh: ${ASKED[*]} for ${SECONDS_ASKED}s each, $JOBS at a time; logs in $BUILD/logs/"
declare -A CODES
running=0
for target in "${ASKED[@]}"; do
  if [[ $running -ge $JOBS ]]; then
    wait -n
    running=$((running - 1))
  fi
  { run "$target"; echo $? >"$WORK/$target.rc"; } &
  running=$((running + 1))
done
wait
status=0
for target in "${ASKED[@]}"; do
  CODES[$target]=$(cat "$WORK/$target.rc" 2>/dev/null || echo 1)
  [[ ${CODES[$target]} -ne 0 ]] && status=1
done

printf '\n%-16s %12s %8s  %-22s %10s  %s\n' target executions exec/s coverage "peak RSS" findings
for target in "${ASKED[@]}"; do stats "$target" "${CODES[$target]}"; done
for target in "${ASKED[@]}"; do
  if [[ ${CODES[$target]} -ne 0 ]]; then
    echo "fuzz.sh: $target FAILED: see $BUILD/logs/$target.log; inputs kept in $BUILD/artifacts/$target/"
    grep -E '^(SUMMARY|[a-z_]+_fuzzer: )' "$BUILD/logs/$target.log" | head -n 3 | sed 's/^/  /'
  fi
done
exit $status
}
