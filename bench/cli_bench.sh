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

# Runs a command with stdin/stdout redirected and prints its wall time in seconds.
timed() {
  local in=$1 out=$2
  shift 2
  local t0 t1
  t0=$(date +%s.%N)
  "$@" <"$in" >"$out"
  t1=$(date +%s.%N)
  awk -v a="$t0" -v b="$t1" 'BEGIN { printf "%.2f", b - a }'
}

mb() { awk -v s="$1" -v t="$2" 'BEGIN { printf "%.1f", s / 1048576 / (t > 0 ? t : 0.01) }'; }
pct() { awk -v p="$1" -v w="$2" 'BEGIN { printf "%.1f", 100 * p / w }'; }

echo "| data | size | tavi pack | gzip -6 | tavi unpack | gzip -d | tavi size | gzip -6 size | zstd -3 size | xz -6 size |"
echo "|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|"
for kind in text code mixed; do
  f=$work/$kind
  size=$(stat -c %s "$f")
  tp=$(timed "$f" "$f.tavi" "$tavi" pack -)
  tu=$(timed "$f.tavi" "$f.back" "$tavi" unpack -)
  cmp -s "$f" "$f.back" || { echo "tavi round trip differs on $kind" >&2; exit 1; }
  gp=$(timed "$f" "$f.gz" gzip -6 -c)
  gu=$(timed "$f.gz" "$f.back" gzip -d -c)
  zstd -q -3 -c <"$f" >"$f.zst"
  xz -6 -c <"$f" >"$f.xz"
  printf '| %s | %.1f MiB | %.2f s (%s MB/s) | %.2f s (%s MB/s) | %.2f s | %.2f s | %s%% | %s%% | %s%% | %s%% |\n' \
    "$kind" "$(awk -v s="$size" 'BEGIN { print s / 1048576 }')" "$tp" "$(mb "$size" "$tp")" "$gp" "$(mb "$size" "$gp")" \
    "$tu" "$gu" "$(pct "$(stat -c %s "$f.tavi")" "$size")" "$(pct "$(stat -c %s "$f.gz")" "$size")" \
    "$(pct "$(stat -c %s "$f.zst")" "$size")" "$(pct "$(stat -c %s "$f.xz")" "$size")"
  rm -f "$f".*
done
echo
echo "Sizes are in per cent of the input; MB/s are MiB of input per second of wall time."
