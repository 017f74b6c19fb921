#!/bin/sh
# Runs one language test: zosh [options] NAME.prg < NAME.in, then compares
# standard output and standard error (merged) with NAME.out.
#   NAME.in      optional: fed to standard input (else /dev/null)
#   NAME.args    optional: zosh options placed before the program name
#   NAME.status  optional: the expected exit status (else 0)
#   NAME.env     optional: NAME=value lines put into zosh's environment, for
#                tests that depend on the locale or the time zone
# The program runs in its own folder so that relative file names work, and
# that folder is cut from the output so that reports naming the file match on
# any checkout. In a folder holding a file named "sandbox" each program runs
# instead in a fresh temporary folder with a copy of itself (and of any
# *.py helpers beside it), removed afterwards: programs that write files.
zosh=$1
prg=$2
stem=${prg%.prg}
dir=$(dirname "$prg")
input=/dev/null
[ -f "$stem.in" ] && input="$stem.in"
args=""
[ -f "$stem.args" ] && args=$(cat "$stem.args")
want_status=0
[ -f "$stem.status" ] && want_status=$(cat "$stem.status")
# The machine charset follows the locale: the tests are written for UTF-8
# unless NAME.env names another locale.
LC_ALL=C.UTF-8
export LC_ALL

if [ -f "$stem.env" ]; then
  while IFS= read -r setting; do
    case "$setting" in ''|'#'*) ;; *) export "${setting?}" ;; esac
  done < "$stem.env"
fi

actual=$(mktemp)
sandbox=""
trap 'rm -f "$actual"; [ -n "$sandbox" ] && rm -rf "$sandbox"' EXIT
if [ -f "$dir/sandbox" ]; then
  sandbox=$(mktemp -d)
  cp "$prg" "$sandbox/"
  for helper in "$dir"/*.py; do [ -f "$helper" ] && cp "$helper" "$sandbox/"; done
  case "$input" in /dev/null) ;; *) input=$(cd "$(dirname "$input")" && pwd -P)/$(basename "$input") ;; esac
  cd "$sandbox" || exit 1
else
  cd "$dir" || exit 1
fi
here=$(pwd -P)
# shellcheck disable=SC2086
"$zosh" $args "$(basename "$prg")" < "$input" > "$actual.raw" 2>&1
status=$?
sed "s|$here/||g" "$actual.raw" > "$actual"
rm -f "$actual.raw"

failed=0
if ! diff -u "$stem.out" "$actual"; then
  failed=1
fi
if [ "$status" != "$want_status" ]; then
  echo "exit status $status, expected $want_status"
  failed=1
fi
exit $failed
