#!/usr/bin/env bash
# End-to-end checks of tavi pack, unpack and info on temporary files.
# usage: pack_test.sh TAVI GROUP   (GROUP: roundtrip password damage overwrite stdio info cancel usage)
set -u
tavi=$1
group=$2
# shellcheck source=cli_test_lib.sh
source "$(dirname "$0")/cli_test_lib.sh"
unset TAVI_PASSWORD

# Nothing but the named files may be left in the folder (no temporaries).
only() {
  local left
  left=$(ls -A | grep -v -x -e err.txt -e out.txt "${@/#/-e}" | tr '\n' ' ')
  [ -z "$left" ] || fail "left behind: $left"
}

# Deterministic test data: empty, one byte, compressible text spanning several
# small blocks, pseudo-random bytes (stored blocks), and both mixed.
make_data() {
  : >empty
  printf 'x' >one
  for i in $(seq 1 6000); do echo "line $i of the text, with words that repeat"; done >text
  LC_ALL=C awk 'BEGIN { s = 12345; for (i = 0; i < 70000; i++) { s = (s * 1103515245 + 12345) % 2147483648; printf "%c", int(s / 65536) % 256 } }' >noise
  cat text noise text >mixed
  touch -d '2001-02-03 04:05:06.789' text
}

roundtrip() {
  local file=$1
  shift
  rm -f "$file.tavi" back
  expect 0 pack "$@" "$file" -o "$file.tavi"
  expect 0 unpack "$file.tavi" -o back
  cmp -s "$file" back || fail "pack $* $file: unpacked bytes differ"
  [ "$(stat -c %Y "$file")" = "$(stat -c %Y back)" ] || fail "pack $* $file: time not restored"
}

case $group in
roundtrip)
  make_data
  export TAVI_PASSWORD='pass wörd'
  for opts in "" "--method store" "--method lz" "--method huffman" "--no-crc" "--no-hash" \
    "--method lz --no-crc --no-hash" "--aes" "--xor" "--aes --xor --method huffman" \
    "--method store --no-crc --no-hash --aes"; do
    for file in empty one text noise mixed; do
      # shellcheck disable=SC2086
      roundtrip "$file" $opts
    done
  done
  for size in 4096 4097 64K 1M; do
    roundtrip mixed --block-size "$size"
    roundtrip one --block-size "$size"
  done
  # A file that is an exact multiple of the block size ends on a full block.
  head -c 8192 mixed >even
  roundtrip even --block-size 4K --aes
  # The default names: INPUT.tavi and back.
  cp text named
  expect 0 pack named
  rm named
  expect 0 unpack named.tavi
  cmp -s named text || fail "default names"
  ;;

password)
  make_data
  printf 'secret\n' >pw
  expect 0 pack --aes --password-file pw mixed -o m.tavi
  TAVI_PASSWORD=secret expect 0 unpack m.tavi -o back
  cmp -s mixed back || fail "password from the environment"
  rm back
  TAVI_PASSWORD=wrong expect 1 unpack m.tavi -o back
  grep -q "wrong password" err.txt || fail "wrong password message: $(cat err.txt)"
  [ "$(wc -l <err.txt)" -eq 1 ] || fail "one-line message expected"
  printf 'wrong\n' >pw2
  expect 1 unpack m.tavi -o back --password-file pw2
  only mixed text noise one empty m.tavi pw pw2
  # No password anywhere and no terminal: refused before anything is written.
  setsid "$tavi" pack --xor mixed -o x.tavi </dev/null 2>err.txt && fail "pack without a password"
  grep -q "password" err.txt || fail "missing password message"
  setsid "$tavi" unpack m.tavi -o back </dev/null 2>err.txt && fail "unpack without a password"
  only mixed text noise one empty m.tavi pw pw2
  # The password is never taken from the command line.
  expect 2 pack --password secret mixed
  ;;

damage)
  make_data
  export TAVI_PASSWORD=secret
  expect 0 pack mixed --block-size 16K -o m.tavi
  expect 0 pack mixed --block-size 16K --aes --no-hash -o a.tavi
  size=$(stat -c %s m.tavi)
  echo keep >back
  for cut in 10 40 71 72 100 $((size / 2)) $((size - 8)) $((size - 1)); do
    head -c "$cut" m.tavi >cut.tavi
    expect 1 unpack cut.tavi -o back --force
    [ "$(cat back)" = keep ] || fail "a truncated file destroyed the target"
  done
  grep -q "damaged\|too short" err.txt || fail "truncation message: $(cat err.txt)"
  # One flipped bit anywhere in a block's data is caught by its trailers.
  for src in m.tavi a.tavi; do
    size=$(stat -c %s "$src")
    for at in 90 200 $((size / 3)) $((size - 30)); do
      cp "$src" flip.tavi
      byte=$(od -An -tu1 -j "$at" -N1 flip.tavi | tr -d ' ')
      printf "$(printf '\\%03o' $((byte ^ 4)))" | dd of=flip.tavi bs=1 seek="$at" conv=notrunc 2>/dev/null
      expect 1 unpack flip.tavi -o back --force
      [ "$(cat back)" = keep ] || fail "a damaged file destroyed the target"
    done
  done
  cat m.tavi m.tavi >twice.tavi
  expect 1 unpack twice.tavi -o back --force
  only mixed text noise one empty m.tavi a.tavi cut.tavi flip.tavi twice.tavi back
  ;;

overwrite)
  make_data
  expect 0 pack text -o t.tavi
  echo precious >target
  expect 1 unpack t.tavi -o target
  grep -q "exists" err.txt || fail "refusal message"
  [ "$(cat target)" = precious ] || fail "target overwritten"
  expect 1 pack noise -o target
  [ "$(cat target)" = precious ] || fail "target overwritten by pack"
  expect 0 unpack t.tavi -o target --force
  cmp -s text target || fail "--force"
  ;;

stdio)
  make_data
  "$tavi" pack - <mixed | "$tavi" unpack - >back || fail "pipe"
  cmp -s mixed back || fail "pipe bytes"
  cat text | "$tavi" pack - -o s.tavi || fail "pack from standard input"
  "$tavi" unpack s.tavi -o - >back || fail "unpack to standard output"
  cmp -s text back || fail "standard output bytes"
  # Data from a pipe is dated when it was packed.
  expect 0 unpack s.tavi -o dated
  [ $(($(date +%s) - $(stat -c %Y dated))) -lt 3600 ] || fail "pipe data dated $(stat -c %y dated)"
  # The size is not known ahead from a pipe; truncation is still caught.
  head -c 100 s.tavi | "$tavi" unpack - >/dev/null 2>err.txt && fail "truncated pipe"
  "$tavi" pack - <empty | "$tavi" unpack - >back || fail "empty pipe"
  [ ! -s back ] || fail "empty pipe bytes"
  ;;

info)
  make_data
  export TAVI_PASSWORD=secret
  expect 0 pack mixed --block-size 64K --aes -o m.tavi
  "$tavi" info m.tavi </dev/null >out.txt 2>err.txt || fail "info: $(cat err.txt)"
  grep -q 'identifier: *0x50564154 "TAVP"' out.txt || fail "identifier"
  grep -q 'flags: *compressed, enciphered' out.txt || fail "flags"
  grep -q 'block flags: *CRC-32, hash, AES-256' out.txt || fail "block flags"
  grep -q "unpacked size: *$(stat -c %s mixed) bytes" out.txt || fail "unpacked size"
  grep -q "packed size: *$(stat -c %s m.tavi) bytes" out.txt || fail "packed size"
  blocks=$((($(stat -c %s mixed) + 65535) / 65536))
  grep -q "blocks: *$blocks " out.txt || fail "block count"
  "$tavi" info - <m.tavi >out.txt 2>err.txt || fail "info from a pipe: $(cat err.txt)"
  grep -q "blocks: *$blocks " out.txt || fail "block count from a pipe"
  # A file saved by another program: its own identifier, one container after the
  # header. Built here from the first block of a plain packed file.
  expect 0 pack text --method lz -o t.tavi
  len=$(od -An -tu4 -j 68 -N4 t.tavi | tr -d ' ')
  { printf 'ABCD1234\7\0\0\0\1\0\0\0'; head -c 16 /dev/zero; tail -c +73 t.tavi | head -c "$len"; } >object.bin
  "$tavi" info object.bin >out.txt 2>err.txt || fail "info object: $(cat err.txt)"
  grep -q 'identifier: *0x44434241 "ABCD"$' out.txt || fail "foreign identifier"
  grep -q 'version: *7' out.txt || fail "reserved word"
  grep -q 'method: *LZ' out.txt || fail "method"
  grep -q "unpacked size: *$(od -An -tu4 -j 64 -N4 t.tavi | tr -d ' ') bytes" out.txt || fail "count"
  # The same with an enciphered container: its count is enciphered too.
  expect 0 pack text --aes -o a.tavi
  len=$(od -An -tu4 -j 68 -N4 a.tavi | tr -d ' ')
  { printf 'ABCD1234\7\0\0\0\3\0\0\0'; head -c 16 /dev/zero; tail -c +73 a.tavi | head -c "$len"; } >secret.bin
  "$tavi" info secret.bin >out.txt 2>err.txt || fail "info enciphered object: $(cat err.txt)"
  grep -q 'flags: *compressed, enciphered' out.txt || fail "enciphered object flags"
  grep -q 'unpacked size: *enciphered' out.txt || fail "enciphered object count"
  { printf 'ABCD1234\0\0\0\0\0\0\0\0'; head -c 20 /dev/zero; } >raw.bin
  "$tavi" info raw.bin >out.txt || fail "info raw"
  grep -q 'body: *raw, 4 bytes' out.txt || fail "raw body"
  expect 1 info text
  grep -q "common file header" err.txt || fail "not a header message"
  expect 1 info one
  ;;

cancel)
  # An interrupt while packing or unpacking removes the partial output. The input
  # stalls after its first megabytes, so the program is surely still at work.
  head -c $((6 << 20)) /dev/urandom | base64 >big
  { head -c $((5 << 20)) big; sleep 4; } | "$tavi" pack --method store - -o big.tavi 2>err.txt &
  pid=$!
  sleep 1
  kill -INT $pid
  wait $pid && fail "pack was not interrupted"
  grep -q cancelled err.txt || fail "cancel message: $(cat err.txt)"
  only big
  "$tavi" pack --method store big -o big.tavi || fail "pack"
  { head -c $((5 << 20)) big.tavi; sleep 4; } | "$tavi" unpack - -o back 2>err.txt &
  pid=$!
  sleep 1
  kill -INT $pid
  wait $pid && fail "unpack was not interrupted"
  grep -q cancelled err.txt || fail "cancel message: $(cat err.txt)"
  only big big.tavi
  ;;

usage)
  make_data
  for cmd in pack unpack info; do
    "$tavi" "$cmd" --help >out.txt || fail "$cmd --help"
    grep -q "usage: tavi $cmd" out.txt || fail "$cmd --help text"
  done
  expect 2 pack
  expect 2 pack --method fast text
  expect 2 pack --block-size 100 text
  expect 2 pack --block-size 65M text
  expect 2 pack --method store --no-crc --no-hash text
  expect 2 pack text more
  expect 2 unpack text
  expect 2 info
  expect 1 pack missing-file
  expect 1 unpack missing.tavi
  expect 1 unpack text -o back
  grep -q "not a file made by tavi pack" err.txt || fail "foreign file message"
  only text noise one empty mixed
  ;;

*)
  fail "unknown group"
  ;;
esac
exit 0
