#!/usr/bin/env bash
# Builds the release configuration and runs the tavi program on the bundled samples:
# error messages, hashes, and a tour of pack / unpack / info with every method and
# with encryption, ending with a table of sizes, ratios and speeds.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release
tavi=$PWD/build/release/tools/tavi/tavi
set -x
"$tavi"
"$tavi" errors
"$tavi" errors $(cat samples/error-codes.txt)
"$tavi" text detect samples/greeting-utf8.txt
"$tavi" text convert samples/greeting-utf8.txt --to utf-16le | "$tavi" text convert - --to cp1252 |
  "$tavi" text convert - --from cp1252 --to utf-8 | cmp - samples/greeting-utf8.txt
"$tavi" hash samples/*
set +x

# The tour packs the project's own headers and sources with the samples: about a
# megabyte of text, cut in 256 KiB blocks so that both workers have blocks.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tar -cf "$work/tour.tar" samples include src
size=$(stat -c %s "$work/tour.tar")
export TAVI_PASSWORD=tour-password
now() { date +%s.%N; }
rows=()
for setting in "--method store" "--method huffman" "--method lz" "--method auto" \
  "--method auto --aes" "--method auto --xor --no-hash"; do
  rm -f "$work/tour.tar.tavi" "$work/back"
  # shellcheck disable=SC2086
  t0=$(now); "$tavi" pack $setting --block-size 256K "$work/tour.tar" -o "$work/tour.tar.tavi"; t1=$(now)
  "$tavi" unpack "$work/tour.tar.tavi" -o "$work/back"; t2=$(now)
  cmp "$work/tour.tar" "$work/back"
  packed=$(stat -c %s "$work/tour.tar.tavi")
  rows+=("$(awk -v s="$setting" -v n="$size" -v p="$packed" -v a="$t0" -v b="$t1" -v c="$t2" \
    'BEGIN { printf "| %-30s | %9d | %9d | %6.1f%% | %7.1f | %7.1f |", s, n, p, 100 * p / n, n / 1048576 / (b - a), n / 1048576 / (c - b) }')")
  if [ "$setting" = "--method auto --aes" ]; then
    echo "+ tavi info (enciphered, no password needed)"
    "$tavi" info "$work/tour.tar.tavi"
    echo "+ tavi unpack with a wrong password"
    TAVI_PASSWORD=wrong "$tavi" unpack "$work/tour.tar.tavi" -o "$work/wrong" || echo "(exit status $?, nothing written: $(ls "$work" | grep -c wrong) files named wrong)"
  fi
done
echo
echo "Round trips identical. tavi pack / unpack on $size bytes of the project's sources:"
echo "| setting                        |     bytes |    packed |  ratio | pack MB/s | unpack MB/s |"
echo "|--------------------------------|----------:|----------:|-------:|--------:|--------:|"
printf '%s\n' "${rows[@]}"
