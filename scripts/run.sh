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
"$tavi" text detect samples/greeting-utf8.txt
"$tavi" text convert samples/greeting-utf8.txt --to utf-16le | "$tavi" text convert - --to cp1252 |
  "$tavi" text convert - --from cp1252 --to utf-8 | cmp - samples/greeting-utf8.txt
"$tavi" hash samples/*
