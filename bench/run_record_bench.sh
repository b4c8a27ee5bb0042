#!/usr/bin/env bash
# Times whole taxor processes against ezdxf scripts doing the same work on generated
# drawings, and prints one table:
#   save      load the drawing and write it back unchanged
#   classify  load, classify every entity (TAXOR_CLASSIFY_AUTO mode 0 with
#             bench/record_bench_classes.txt: one record of five values each), save
#
#   bench/run_record_bench.sh [--build DIR] [--sizes "N..."] [--ezdxf-sizes "N..."] [--runs R]
#     --build DIR        build folder with apps/taxor/taxor and bench/dxf_generate (default build)
#     --sizes            entity counts (default "100000 1000000")
#     --ezdxf-sizes      the counts ezdxf runs on too (default "100000"; "" for none)
#     --runs R           median of R runs per task and side (default 3)
#
# Times are processor seconds (user + system) of the whole process, start-up included;
# memory is the process's peak resident size. Each run is its own process.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
repo="$(dirname "$here")"
build="$repo/build"
sizes="100000 1000000"
ezdxf_sizes="100000"
runs=3
python=/usr/bin/python3

while [[ $# -gt 0 ]]; do
  case "$1" in
    --build) build="$2"; shift 2 ;;
    --sizes) sizes="$2"; shift 2 ;;
    --ezdxf-sizes) ezdxf_sizes="$2"; shift 2 ;;
    --runs) runs="$2"; shift 2 ;;
    -h|--help) sed -n '2,16p' "$0"; exit 0 ;;
    *) echo "unknown option: $1" >&2; exit 2 ;;
  esac
done

taxor="$build/apps/taxor/taxor"
generate="$build/bench/dxf_generate"
for tool in "$taxor" "$generate"; do
  [[ -x "$tool" ]] || { echo "missing $tool: build with -DTAXOR_BENCH=ON first" >&2; exit 1; }
done
[[ -x "$python" ]] || { echo "needs $python (apt-get install python3)" >&2; exit 1; }
if [[ -n "$ezdxf_sizes" ]] && ! "$python" -c 'import ezdxf' 2>/dev/null; then
  echo "ezdxf not importable by $python (apt-get install python3-ezdxf)" >&2
  exit 1
fi

work="$(mktemp -d "${TMPDIR:-/tmp}/record_bench.XXXXXX")"
trap 'rm -rf "$work"' EXIT
classes="$here/record_bench_classes.txt"

# Runs a command `runs` times; prints "CPU_SECONDS PEAK_KB" of the median run by time.
# The child's resource usage is read to the microsecond (GNU time rounds to 10 ms, a
# twentieth of a classifying run at 100 000 entities).
measure() {
  local samples=()
  for ((i = 0; i < runs; ++i)); do
    samples+=("$("$python" - "$@" 2>"$work/err" <<'PY'
import resource, subprocess, sys
done = subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
if done.returncode != 0:
    sys.stderr.write(done.stderr.decode(errors="replace"))
    sys.exit(1)
usage = resource.getrusage(resource.RUSAGE_CHILDREN)
print(f"{usage.ru_utime + usage.ru_stime:.4f} {usage.ru_maxrss}")
PY
    )") || { cat "$work/err" >&2; return 1; }
  done
  printf '%s\n' "${samples[@]}" | sort -n | sed -n "$(((runs + 1) / 2))p"
}

ours() {  # TASK INPUT
  local args=(run -o "$work/out.dxf" --quiet)
  if [[ "$1" == classify ]]; then
    args+=(--classes "$classes" -c TAXOR_CLASSIFY_AUTO -c 0 -c 0 -c ALL -c "")
  else
    args+=(-c "")
  fi
  measure "$taxor" "${args[@]}" "$2"
}

theirs() {  # TASK INPUT
  local script="$work/ezdxf_$1.py"
  cat >"$script" <<'PY'
import sys
import ezdxf
task, path, out = sys.argv[1:4]
doc = ezdxf.readfile(path)
if task == "classify":
    # What the classes store per entity: key, integer, real, two texts, in one XRECORD.
    for entity in doc.modelspace():
        xdict = entity.get_extension_dict() if entity.has_extension_dict else entity.new_extension_dict()
        xdict.add_xrecord("BENCH").extend(
            [(1, entity.dxftype()), (90, 7), (40, 1.0), (1, "abc"), (1, "surveyed")])
doc.saveas(out)
PY
  measure "$python" "$script" "$1" "$2" "$work/out_ezdxf.dxf"
}

printf '%-9s %9s %8s %9s %9s %9s %10s %9s %8s\n' entities "size MB" task "ours s" "ours MB/s" \
  "peak MB" "peak/size" "ezdxf s" ratio
printf '%.0s-' {1..88}
echo
for n in $sizes; do
  input="$work/entities_$n.dxf"
  "$generate" "$n" "$input" >/dev/null
  bytes=$(stat -c %s "$input")
  for task in save classify; do
    read -r s kb < <(ours "$task" "$input")
    ez="-" ratio="-"
    if [[ " $ezdxf_sizes " == *" $n "* ]]; then
      read -r ez _ < <(theirs "$task" "$input")
      ratio=$(awk -v e="$ez" -v o="$s" 'BEGIN{printf "%.0f", e / o}')
    fi
    awk -v n="$n" -v b="$bytes" -v t="$task" -v s="$s" -v kb="$kb" -v ez="$ez" -v r="$ratio" \
      'BEGIN{printf "%-9d %9.1f %8s %9.3f %9.0f %9.0f %10.2f %9s %8s\n",
             n, b / 1e6, t, s, b / 1e6 / s, kb * 1024 / 1e6, kb * 1024 / b, ez, r}'
  done
  rm -f "$input"
done
echo "(whole processes, median of $runs runs; s = processor seconds; ratio = ezdxf s / ours s)"
