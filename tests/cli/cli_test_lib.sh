# Helpers shared by the end-to-end scripts of the tavi program. A script sets
# `tavi` (the program) and `group` (the group of checks it runs), then sources this
# file, which moves into a fresh temporary folder removed on exit.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

fail() {
  echo "FAIL ($group): $*" >&2
  exit 1
}

# Runs tavi expecting exit status $1; stdout goes to out.txt, stderr to err.txt.
expect() {
  local want=$1
  shift
  "$tavi" "$@" >out.txt 2>err.txt
  local got=$?
  [ "$got" -eq "$want" ] || fail "tavi $* exited $got, wanted $want: $(cat err.txt)"
}

# Fails unless file $1 holds exactly the text $2 (printf escapes allowed).
same_as() {
  printf "$2" >expected.bin
  cmp -s "$1" expected.bin || fail "$1 is $(od -An -tx1 "$1" | tr -s ' \n' ' '), wanted $2"
}

# Fails unless the pattern $1 occurs in file $2 (out.txt when not given).
grep_out() {
  grep -q -e "$1" "${2:-out.txt}" || fail "no '$1' in: $(cat "${2:-out.txt}")"
}
