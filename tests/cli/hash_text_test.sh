#!/usr/bin/env bash
# End-to-end checks of tavi hash and tavi text on temporary files.
# usage: hash_text_test.sh TAVI SAMPLES GROUP
#   (GROUP: hash check detect convert usage)
set -u
tavi=$1
samples=$2
group=$3
# shellcheck source=cli_test_lib.sh
source "$(dirname "$0")/cli_test_lib.sh"

# Digests of "123456789" and of 200000 bytes "abc...zabc..." (more than one read
# chunk) computed with the library's one-shot hash functions.
check_hash256=180105be8839684ce0009bc1969c46870225098f410403171e148cce1493d28a
check_hash224=4cc13415cbc612ac4b193b819c48bb6ec2e7ebfd8eb6ab209d202891
big_hash256=ddafaa194276d2bf3429f6f8f970b6ebe40499969f64e4b56d5fbdf2f823cfcf
big_hash224=3a9a4f60c7bcc36bec5dbe383a1136fc0292ecc1e639355ad0a6fdfa
big_crc32=4ddfad66

make_data() {
  printf '123456789' >check
  yes abcdefghijklmnopqrstuvwxyz | tr -d '\n' | head -c 200000 >big
  : >empty
}

hash_modes() {
  make_data
  expect 0 hash check big
  same_as out.txt "$check_hash256  check\n$big_hash256  big\n"
  expect 0 hash --hash256 check
  same_as out.txt "$check_hash256  check\n"
  expect 0 hash --hash224 check big
  same_as out.txt "$check_hash224  check\n$big_hash224  big\n"
  expect 0 hash --crc32 check big empty
  same_as out.txt "cbf43926  check\n$big_crc32  big\n00000000  empty\n"
  # Standard input, alone and between files.
  "$tavi" hash --crc32 check - big <big >out.txt || fail "hash from standard input"
  same_as out.txt "cbf43926  check\n$big_crc32  -\n$big_crc32  big\n"
  # A missing file fails with the library's message; the others are still hashed.
  expect 1 hash --crc32 check missing
  same_as out.txt "cbf43926  check\n"
  grep_out "tavi hash: missing: .*find the file" err.txt
}

hash_check() {
  make_data
  "$tavi" hash check big >list256 || fail "make list"
  "$tavi" hash --crc32 check big >listcrc || fail "make list"
  "$tavi" hash --hash224 big >list224 || fail "make list"
  for list in list256 listcrc list224; do
    expect 0 hash --check $list
    grep_out "^big: OK$"
  done
  # Kinds follow from the digest length, upper-case hex, "*" names and CRLF ends.
  cat list256 listcrc list224 >mixed
  printf '%s *check\r\n' "${check_hash224^^}" >>mixed
  expect 0 hash --check mixed
  [ "$(grep -c ': OK$' out.txt)" -eq 6 ] || fail "mixed list: $(cat out.txt)"
  expect 0 hash --check - <listcrc
  # With a kind given, lines of other lengths fail.
  expect 1 hash --crc32 --check list256
  grep_out "list256:1: FAILED"
  # A changed file, a missing file and a line that is no digest line are named.
  printf 'X' >>big
  printf 'not a digest line\n%s  gone\n' "$check_hash256" >>list256
  expect 1 hash --check list256
  grep_out "^check: OK$"
  grep_out "^big: FAILED$"
  grep_out "^list256:3: FAILED"
  grep_out "^gone: FAILED (.*find the file"
  grep_out "3 of 4 lines failed" err.txt
  expect 1 hash --check empty
  expect 1 hash --check no-such-list
}

detect() {
  local bytes name text
  while read -r bytes name text; do
    printf "$bytes$text" >file
    expect 0 text detect file
    same_as out.txt "$name\n"
    # A file of the mark alone is empty text in that format.
    printf "$bytes" >file
    expect 0 text detect - <file
    same_as out.txt "$name\n"
  done <<'EOF'
\xef\xbb\xbf utf-8 \xc3\xa9t\xc3\xa9
\xff\xfe utf-16le \xe9\x00t\x00
\xfe\xff utf-16be \x00\xe9\x00t
\xff\xfe\x00\x00 utf-32le \xe9\x00\x00\x00
\x00\x00\xfe\xff utf-32be \x00\x00\x00\xe9
EOF
  # A partial 32-bit unit is damaged, and so is a broken UTF-8 sequence.
  printf '\xff\xfe\x00\x00A' >file
  expect 1 text detect file
  printf '\xef\xbb\xbf\xc3' >file
  expect 1 text detect file
  grep_out "tavi text: file: " err.txt
  printf 'plain' >file
  expect 0 text detect file
  grep_out "^cp[0-9]* (no byte-order mark)$"
  expect 1 text detect missing
  grep_out "missing: .*find the file" err.txt
}

convert() {
  local sample=$samples/greeting-utf8.txt
  # Every format written from the sample, byte for byte.
  local text='Gr\xfc\xdfe aus K\xf6ln \x96 \xabd\xe9j\xe0 vu\xbb, 5 \x80\r\nZweite Zeile.\n'
  expect 0 text convert "$sample" --to cp1252 -o t1252
  same_as t1252 "$text"
  expect 0 text convert "$sample" --to iso-8859-1 -o latin
  local latin=${text/\\x96/?}
  same_as latin "${latin/\\x80/?}"
  expect 0 text convert "$sample" --to utf-16le -o t16
  head -c 8 t16 >start
  same_as start '\xff\xfeG\x00r\x00\xfc\x00'
  expect 0 text convert t16 --to utf-32le -o t32
  head -c 8 t32 >start
  same_as start '\xff\xfe\x00\x00G\x00\x00\x00'
  # Round trips: UTF-8 -> UTF-16LE -> cp1252 -> UTF-8, and through 32-bit units.
  expect 0 text convert t1252 --from cp1252 --to utf-8 -o back
  cmp -s back "$sample" || fail "cp1252 -> utf-8 differs from the sample"
  expect 0 text convert t32 --to 65001 -o back
  cmp -s back "$sample" || fail "utf-32le -> utf-8 differs from the sample"
  # Big-endian input, standard input and output.
  printf '\xfe\xff\x00h\xd8\x3d\xde\x00' >be
  expect 0 text convert be --to utf-8
  same_as out.txt '\xef\xbb\xbfh\xf0\x9f\x98\x80'
  "$tavi" text convert - --to utf-16le -o - <out.txt >out16 || fail "stdin to stdout"
  same_as out16 '\xff\xfeh\x00\x3d\xd8\x00\xde'
  # A character cp1252 lacks becomes "?".
  expect 0 text convert be --to windows-1252
  same_as out.txt 'h?'
  # Malformed input fails with the library's message and writes nothing.
  printf '\xef\xbb\xbfok\xff' >bad
  expect 1 text convert bad --to utf-16le -o never
  grep_out "tavi text: bad: " err.txt
  [ ! -e never ] || fail "output written for malformed input"
  expect 1 text convert missing --to utf-8 -o never
  expect 1 text convert "$sample" --to utf-8 -o no-such-dir/out
  grep_out "tavi text: no-such-dir/out: " err.txt
}

usage() {
  make_data
  expect 2 hash
  expect 2 hash --crc32 --hash224 check
  expect 2 hash --sha1 check
  expect 2 hash --check
  expect 2 hash --check list check
  expect 0 hash --help
  grep_out "usage: tavi hash"
  expect 2 text
  expect 2 text frobnicate
  expect 0 text --help
  expect 0 text convert --help
  expect 2 text detect
  expect 2 text detect a b
  expect 2 text convert check
  expect 2 text convert --to utf-8
  expect 2 text convert check --to
  expect 2 text convert check --to utf-8 extra
  expect 2 text convert check --to utf-16be
  grep_out "can be read but not written: utf-16be" err.txt
  expect 2 text convert check --to UTF-32BE
  for bad in cp9999 932 1200 utf-7 iso-8859-x 0 70000; do
    expect 2 text convert check --to $bad
    grep_out "unknown text format $bad" err.txt
  done
  expect 2 text convert check --from klingon --to utf-8
  expect 0 errors --help
}

case $group in
  hash) hash_modes ;;
  check) hash_check ;;
  detect) detect ;;
  convert) convert ;;
  usage) usage ;;
  *) fail "unknown group" ;;
esac
echo "ok ($group)"
