#!/usr/bin/env bash
# Installs what is needed, builds TAXOR and runs the example job: the bundled drawing
# examples/site.dxf classified with examples/classes.txt by examples/demo.scr.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/setup-debian.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build

TAXOR=build/apps/taxor/taxor
if [[ ! -x $TAXOR ]]; then
  echo "taxor is not built yet" >&2
  exit 1
fi
# The example job of the README, whose transcript comes from this command.
mkdir -p build/example
"$TAXOR" --classes examples/classes.txt --script examples/demo.scr -o build/example/site.dxf "$@" \
  examples/site.dxf
echo "Saved the classified drawing to build/example/site.dxf"
