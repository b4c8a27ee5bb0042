#!/usr/bin/env bash
# Installs what TAXOR needs to build and test on Debian 12 (bookworm): compilers, CMake,
# Ninja, GoogleTest, Benchmark, CLI11, clang with the libFuzzer runtime, and python3-ezdxf
# (the independent DXF reader the tests compare against, run as /usr/bin/python3).
# Installs only what is missing; prints nothing when everything is there.
set -euo pipefail

PACKAGES=(
  build-essential g++ cmake ninja-build ccache
  libgtest-dev libgmock-dev libbenchmark-dev libcli11-dev
  clang
  python3 python3-ezdxf
)

if [[ $(id -u) -eq 0 ]]; then
  AS_ROOT=()
elif command -v sudo >/dev/null 2>&1; then
  AS_ROOT=(sudo)
else
  echo "setup-debian.sh: run as root, or install sudo" >&2
  exit 1
fi

installed() {
  dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q 'ok installed'
}

UPDATED=0
apt_install() {
  echo "setup-debian.sh: installing $*"
  if [[ $UPDATED -eq 0 ]]; then
    "${AS_ROOT[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq
    UPDATED=1
  fi
  "${AS_ROOT[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "$@" </dev/null
}

missing=()
for p in "${PACKAGES[@]}"; do
  installed "$p" || missing+=("$p")
done
if [[ ${#missing[@]} -gt 0 ]]; then
  apt_install "${missing[@]}"
fi

# libFuzzer's runtime ships apart from clang (libclang-rt-14-dev on bookworm).
fuzzer_runtime_present() {
  local arch
  arch=$(uname -m)
  local f
  for f in "libclang_rt.fuzzer-${arch}.a" "libclang_rt.fuzzer.a"; do
    [[ -f "$(clang -print-file-name="$f")" ]] && return 0
  done
  return 1
}
if ! fuzzer_runtime_present; then
  major=$(clang -dumpversion | cut -d. -f1)
  apt_install "libclang-rt-${major}-dev"
  if ! fuzzer_runtime_present; then
    echo "setup-debian.sh: libFuzzer runtime still missing after installing libclang-rt-${major}-dev" >&2
    exit 1
  fi
fi
