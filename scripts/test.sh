#!/usr/bin/env bash
# Builds the release configuration (warnings are errors) and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake --preset release
cmake --build --preset release
ctest --preset release -j2
