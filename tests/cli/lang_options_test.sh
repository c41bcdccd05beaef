#!/usr/bin/env bash
# End-to-end checks of tavi lang and tavi options on temporary files.
# usage: lang_options_test.sh TAVI GROUP
#   (GROUP: check get options usage)
set -u
tavi=$1
group=$2
# shellcheck source=cli_test_lib.sh
source "$(dirname "$0")/cli_test_lib.sh"

lang_check() {
  # A clean file in UTF-16 with a byte-order mark, CR LF ends and no final line end.
  printf '\xff\xfe#\x00\r\x00\n\x001\x00=\x00a\x00\r\x00\n\x002\x00=\x00b\x00' >clean.lng
  expect 0 lang check clean.lng
  same_as out.txt "clean.lng: 3 lines, 2 strings, 0 problems\n"
  [ -s err.txt ] && fail "clean file wrote to stderr: $(cat err.txt)"

  # Every kind of refused line with its number; the duplicate names the kept line;
  # "5 = x" is only a note; the message box of the duplicate is not shown.
  printf '# texts\n12=Hello\n0=zero\n2147483647=big\n5 = x\n14=\n12=again\n15=""\n16="  kept  "\n' \
    >bad.lng
  expect 1 lang check bad.lng
  same_as out.txt "bad.lng:3: ID 0 is out of range (1 to 2147483646)
bad.lng:4: ID 2147483647 is out of range (1 to 2147483646)
bad.lng:5: note: '5' is not followed by '=', so the line is a comment
bad.lng:6: ID 14 has an empty value
bad.lng:7: ID 12 is a duplicate (first defined on line 2)
bad.lng:8: ID 15 has an empty value
bad.lng: 9 lines, 2 strings, 5 problems\n"
  [ -s err.txt ] && fail "check wrote to stderr: $(cat err.txt)"

  # A note alone leaves the file clean; a file without strings is not.
  printf '1=a\n7 = b\n' >note.lng
  expect 0 lang check note.lng
  grep_out "^note.lng:2: note: "
  printf '# nothing\n' >none.lng
  expect 1 lang check none.lng
  same_as out.txt "none.lng: 1 lines, 0 strings, 1 problem (no strings)\n"

  expect 1 lang check missing.lng
  grep_out "^tavi lang: missing.lng: .*find the file" err.txt
}

lang_get() {
  printf '1=one\n12=a\\tb\\\\n\n13="  two  "\n20=\xc3\xa9t\xc3\xa9 \xf0\x9f\x98\x80\n' >t.lng
  expect 0 lang get t.lng 12
  same_as out.txt 'a\tb\\n\n'
  expect 0 lang get t.lng 13
  same_as out.txt "  two  \n"
  expect 0 lang get t.lng 0x14
  same_as out.txt "\xc3\xa9t\xc3\xa9 \xf0\x9f\x98\x80\n"
  expect 1 lang get t.lng 2
  same_as err.txt "tavi lang: t.lng: ID 2: The item was not found\n"
  [ -s out.txt ] && fail "a missing ID printed $(cat out.txt)"
  expect 1 lang get missing.lng 1
  grep_out "^tavi lang: missing.lng: .*find the file" err.txt
  # Refused lines do not hide the strings that loaded, but are mentioned.
  printf '1=one\n1=again\n' >dup.lng
  expect 0 lang get dup.lng 1
  same_as out.txt "one\n"
  grep_out "warning: some lines were refused" err.txt
}

options() {
  printf 'Width=10\nName="hello world"\nBig=70000\nFlag=2\nOn=1\nRatio=1.5\nBad=abc\n' >app.opt
  expect 0 options get app.opt Width=
  same_as out.txt "10\n"
  expect 0 options get app.opt Name=
  same_as out.txt '"hello world"\n'
  expect 0 options get app.opt Name= --as text
  same_as out.txt "hello world\n"
  expect 0 options get app.opt --as u16 Width=
  same_as out.txt "10\n"
  expect 0 options get app.opt On= --as bool
  same_as out.txt "true\n"
  expect 0 options get app.opt Ratio= --as double
  same_as out.txt "1.5\n"
  expect 0 options get app.opt Big= --as unsigned
  same_as out.txt "70000\n"
  # Malformed values give the option error as one line, without the file part.
  expect 1 options get app.opt Big= --as u16
  same_as err.txt "tavi options: app.opt: Option error: The size limit was reached. Line: Big=70000\n"
  expect 1 options get app.opt Flag= --as bool
  grep_out "^tavi options: app.opt: Option error: .* Line: Flag=2$" err.txt
  expect 1 options get app.opt Bad= --as double
  grep_out "^tavi options: app.opt: Option error: The option value is not a valid number. Line: Bad=abc$" err.txt
  [ -s out.txt ] && fail "a malformed value printed $(cat out.txt)"
  # A missing key and a missing file.
  expect 1 options get app.opt Height=
  same_as err.txt "tavi options: app.opt: Height=: The item was not found\n"
  expect 1 options get missing.opt Width=
  same_as err.txt "tavi options: missing.opt: The system cannot find the file specified\n"
}

usage() {
  for cmd in lang options; do
    expect 0 $cmd --help
    grep_out "^usage: tavi $cmd"
    expect 2 $cmd
    expect 2 $cmd frobnicate
  done
  expect 0 lang check x --help
  printf '1=a\n' >t.lng
  expect 2 lang check
  expect 2 lang check t.lng t.lng
  expect 2 lang get t.lng
  for id in 0 2147483647 x 0x 12a -1; do
    expect 2 lang get t.lng "$id"
  done
  expect 2 options get t.lng
  expect 2 options get t.lng ""
  expect 2 options get t.lng K= --as
  expect 2 options get t.lng K= --as float
  expect 2 options get t.lng K= extra
  expect 2 options get t.lng K= --verbose
  expect 0 help
  grep_out "^  lang "
  grep_out "^  options "
}

case $group in
  check) lang_check ;;
  get) lang_get ;;
  options) options ;;
  usage) usage ;;
  *) fail "unknown group" ;;
esac
echo "ok ($group)"
