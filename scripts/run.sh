#!/usr/bin/env bash
# Builds the release configuration and runs the tavi program on the bundled samples.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release --target tavi_cli
tavi=build/release/tools/tavi/tavi
set -x
"$tavi"
"$tavi" errors
"$tavi" errors $(cat samples/error-codes.txt)
