#!/usr/bin/env bash
# Wall time and size of `tavi pack` / `tavi unpack` beside gzip, zstd and xz on the
# three kinds of data of the compression benchmarks: text (a tar of
# /usr/include/c++), code (/usr/bin/cmake) and mixed data (16 MiB of ICU's data
# library). Prints a Markdown table; every tool reads and writes files in /tmp.
# usage: bench/cli_bench.sh [path/to/tavi]   (default build/release/tools/tavi/tavi)
set -euo pipefail
cd "$(dirname "$0")/.."
tavi=$(realpath "${1:-build/release/tools/tavi/tavi}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

tar -cf "$work/text" -C /usr/include c++ 2>/dev/null
cp /usr/bin/cmake "$work/code"
head -c $((16 << 20)) /usr/lib/x86_64-linux-gnu/libicudata.so >"$work/mixed"

# Runs a command with stdin/stdout redirected; prints "wall cpu" in seconds (cpu is
# user + system time of all its threads).
timed() {
  local in=$1 out=$2
  shift 2
  local TIMEFORMAT='%R %U %S'
  { time "$@" <"$in" >"$out" 2>/dev/null; } 2>&1 | awk '{ printf "%.2f %.2f\n", $1, $2 + $3 }'
}

pct() { awk -v p="$1" -v w="$2" 'BEGIN { printf "%.1f", 100 * p / w }'; }

echo "| data | size | tavi pack | gzip -6 | tavi unpack | gzip -d | tavi size | gzip -6 size | zstd -3 size | xz -6 size |"
echo "|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|"
for kind in text code mixed; do
  f=$work/$kind
  size=$(stat -c %s "$f")
  read -r tp cp < <(timed "$f" "$f.tavi" "$tavi" pack -)
  read -r tu cu < <(timed "$f.tavi" "$f.back" "$tavi" unpack -)
  cmp -s "$f" "$f.back" || { echo "tavi round trip differs on $kind" >&2; exit 1; }
  read -r gp gcp < <(timed "$f" "$f.gz" gzip -6 -c)
  read -r gu gcu < <(timed "$f.gz" "$f.back" gzip -d -c)
  zstd -q -3 -c <"$f" >"$f.zst"
  xz -6 -c <"$f" >"$f.xz"
  printf '| %s | %.1f MiB | %s s (cpu %s s) | %s s (cpu %s s) | %s s (cpu %s s) | %s s (cpu %s s) | %s%% | %s%% | %s%% | %s%% |\n' \
    "$kind" "$(awk -v s="$size" 'BEGIN { print s / 1048576 }')" "$tp" "$cp" "$gp" "$gcp" "$tu" "$cu" "$gu" "$gcu" \
    "$(pct "$(stat -c %s "$f.tavi")" "$size")" "$(pct "$(stat -c %s "$f.gz")" "$size")" \
    "$(pct "$(stat -c %s "$f.zst")" "$size")" "$(pct "$(stat -c %s "$f.xz")" "$size")"
  rm -f "$f".*
done
echo
echo "Times are wall seconds, with the processor seconds of all threads (user + system)"
echo "in brackets; sizes are in per cent of the input."
