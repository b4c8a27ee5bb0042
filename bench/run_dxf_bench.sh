#!/usr/bin/env bash
# Compares the DXF library with ezdxf on generated drawings and prints a table, then
# times the library alone on the shared corpus of real drawings.
#
#   bench/run_dxf_bench.sh [options]
#     --build DIR          build folder holding bench/dxf_generate and bench/dxf_bench
#                          (default: <repo>/build, configured with -DTAXOR_BENCH=ON)
#     --sizes "N..."       entity counts of plain drawings (default: "10000 100000 1000000")
#     --xrecord-sizes "N..." entity counts of drawings whose entities already carry an
#                          XRECORD (default: "10000 100000")
#     --no-ezdxf-1m        skip ezdxf for drawings of 1 000 000 entities or more
#     --no-ezdxf           skip ezdxf entirely
#     --repeat R           best time of R runs per task and side (default 1)
#     --corpus DIR         real drawings (default: <repo>/../shared/corpus/dxf)
#     --workdir DIR        where drawings are generated (default: a new temporary folder,
#                          removed at the end)
#
# Every task runs in its own process, so each peak RSS belongs to one task alone.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
repo="$(dirname "$here")"
build="$repo/build"
sizes="10000 100000 1000000"
xrecord_sizes="10000 100000"
ezdxf_limit=""  # entity count from which ezdxf is skipped; empty: never
repeat=1
corpus="$repo/../shared/corpus/dxf"
workdir=""
python=/usr/bin/python3

while [[ $# -gt 0 ]]; do
  case "$1" in
    --build) build="$2"; shift 2 ;;
    --sizes) sizes="$2"; shift 2 ;;
    --xrecord-sizes) xrecord_sizes="$2"; shift 2 ;;
    --no-ezdxf-1m) ezdxf_limit=1000000; shift ;;
    --no-ezdxf) ezdxf_limit=0; shift ;;
    --repeat) repeat="$2"; shift 2 ;;
    --corpus) corpus="$2"; shift 2 ;;
    --workdir) workdir="$2"; shift 2 ;;
    -h|--help) sed -n '2,18p' "$0"; exit 0 ;;
    *) echo "unknown option: $1" >&2; exit 2 ;;
  esac
done

generate="$build/bench/dxf_generate"
ours="$build/bench/dxf_bench"
for tool in "$generate" "$ours"; do
  if [[ ! -x "$tool" ]]; then
    echo "missing $tool: cmake -S $repo -B $build -G Ninja -DTAXOR_BENCH=ON && ninja -C $build" >&2
    exit 1
  fi
done
if [[ "$ezdxf_limit" != 0 ]] && ! "$python" -c 'import ezdxf' 2>/dev/null; then
  echo "ezdxf not importable by $python (apt-get install python3-ezdxf); use --no-ezdxf" >&2
  exit 1
fi

if [[ -z "$workdir" ]]; then
  workdir="$(mktemp -d "${TMPDIR:-/tmp}/dxf_bench.XXXXXX")"
  trap 'rm -rf "$workdir"' EXIT
else
  mkdir -p "$workdir"
fi
# Both sides write their saved drawings here, on the same disk as the inputs.
export TMPDIR="$workdir"

# The value of KEY in a "key=value ..." result line.
field() { sed -n "s/.*\b$1=\([^ ]*\).*/\1/p" <<<"$2"; }

# Runs a task R times; prints the line with the lowest time, with the highest peak RSS of
# all runs put in (so a lucky run does not hide memory).
best_of() {
  local best="" best_s="" peak=0 line s kb
  for ((run = 0; run < repeat; ++run)); do
    line="$("$@" | grep '^task=' | tail -n 1)" || return 1
    [[ "$(field failed "$line")" == 0 ]] || return 1
    s="$(field seconds "$line")"
    kb="$(field peak_rss_kb "$line")"
    ((kb > peak)) && peak=$kb
    if [[ -z "$best" ]] || awk -v a="$s" -v b="$best_s" 'BEGIN{exit !(a < b)}'; then
      best="$line"; best_s="$s"
    fi
  done
  sed "s/peak_rss_kb=[0-9]*/peak_rss_kb=$peak/" <<<"$best"
}

# --- Generated drawings.
files=()
for n in $sizes; do
  files+=("$n:$workdir/entities_$n.dxf:")
done
for n in $xrecord_sizes; do
  files+=("$n:$workdir/entities_${n}_xrecords.dxf:--with-xrecords")
done

echo "Generating drawings in $workdir"
for entry in "${files[@]}"; do
  IFS=: read -r n path flag <<<"$entry"
  start=$(date +%s.%N)
  "$generate" "$n" "$path" $flag
  printf '  %-32s %8.1f MB  %6.2f s\n' "$(basename "$path")" \
    "$(awk -v b="$(stat -c %s "$path")" 'BEGIN{print b / 1e6}')" \
    "$(awk -v a="$start" -v b="$(date +%s.%N)" 'BEGIN{print b - a}')"
done

# The smallest drawings are checked with ezdxf's audit so that the table is known to be
# about valid drawings; larger ones come from the same code.
smallest=""
for n in $sizes $xrecord_sizes; do
  if [[ -z "$smallest" ]] || ((n < smallest)); then smallest=$n; fi
done
# Auditing a huge drawing with ezdxf takes minutes and proves nothing more.
if [[ "$ezdxf_limit" != 0 && -n "$smallest" ]] && ((smallest <= 100000)); then
  for path in "$workdir/entities_${smallest}.dxf" "$workdir/entities_${smallest}_xrecords.dxf"; do
    [[ -f "$path" ]] || continue
    if ! "$python" "$here/ezdxf_bench.py" --check "$path" | grep -v '^log INFO' >"$workdir/check.txt"; then
      cat "$workdir/check.txt"
      echo "ezdxf audit failed on $path" >&2
      exit 1
    fi
    tail -n 1 "$workdir/check.txt"
  done
fi

echo
header="%-30s %8s  %-8s %9s %9s %9s %8s %10s %10s %10s\n"
row="%-30s %8.1f  %-8s %9.3f %9.1f %9s %8s %10.1f %10.2f %10s\n"
printf "$header" file "size MB" task "ours s" "ours MB/s" "ezdxf s" ratio "ours RSS MB" "RSS/size" \
  "ezdxf RSS MB"
printf '%.0s-' {1..124}
echo
suite_start=$(date +%s)
for entry in "${files[@]}"; do
  IFS=: read -r n path flag <<<"$entry"
  bytes=$(stat -c %s "$path")
  mb=$(awk -v b="$bytes" 'BEGIN{print b / 1e6}')
  for task in load save xrecords; do
    line="$(best_of "$ours" "$task" "$path")" || { echo "dxf_bench $task $path failed" >&2; exit 1; }
    s=$(field seconds "$line")
    rss_mb=$(awk -v k="$(field peak_rss_kb "$line")" 'BEGIN{print k / 1024}')
    ez_s="-" ratio="-" ez_rss="-"
    if [[ -z "$ezdxf_limit" ]] || ((n < ezdxf_limit)); then
      if ez="$(best_of "$python" "$here/ezdxf_bench.py" --task "$task" "$path")"; then
        ez_s=$(field seconds "$ez")
        ratio=$(awk -v e="$ez_s" -v o="$s" 'BEGIN{printf "%.1f", e / o}')
        ez_rss=$(awk -v k="$(field peak_rss_kb "$ez")" 'BEGIN{printf "%.1f", k / 1024}')
        ez_s=$(awk -v e="$ez_s" 'BEGIN{printf "%.3f", e}')
      else
        ez_s="failed"
      fi
    fi
    printf "$row" "$(basename "$path")" "$mb" "$task" "$s" \
      "$(awk -v m="$mb" -v s="$s" 'BEGIN{print m / s}')" "$ez_s" "$ratio" "$rss_mb" \
      "$(awk -v r="$rss_mb" -v m="$mb" 'BEGIN{print r * 1.048576 / m}')" "$ez_rss"
  done
done
echo "(ratio = ezdxf s / ours s; save and xrecords include the load; RSS/size = peak RSS / file size)"
echo "generated-drawing table took $(($(date +%s) - suite_start)) s"

# --- The corpus of real drawings, ours only, one process per task over all files.
if [[ -d "$corpus" ]]; then
  mapfile -t corpus_files < <(find "$corpus" -maxdepth 1 -type f -iname '*.dxf' | sort)
  if ((${#corpus_files[@]} > 0)); then
    echo
    echo "Corpus $corpus (${#corpus_files[@]} files), ours only:"
    printf "%-8s %6s %9s %9s %9s %12s %7s\n" task files "total MB" "total s" "MB/s" "peak RSS MB" failed
    for task in load save; do
      # A failing file is counted, not fatal: the figure is a sanity check.
      line="$("$ours" "$task" "${corpus_files[@]}" | grep '^task=')" || true
      mb=$(awk -v b="$(field bytes "$line")" 'BEGIN{print b / 1e6}')
      s=$(field seconds "$line")
      printf "%-8s %6s %9.1f %9.3f %9.1f %12.1f %7s\n" "$task" "$(field files "$line")" "$mb" "$s" \
        "$(awk -v m="$mb" -v s="$s" 'BEGIN{print m / s}')" \
        "$(awk -v k="$(field peak_rss_kb "$line")" 'BEGIN{print k / 1024}')" "$(field failed "$line")"
    done
  fi
else
  echo "(no corpus at $corpus)"
fi
