#!/bin/sh
# Runs one language test: zosh [options] NAME.prg < NAME.in, then compares
# standard output and standard error (merged) with NAME.out.
#   NAME.in      optional: fed to standard input (else /dev/null)
#   NAME.args    optional: zosh options placed before the program name
#   NAME.status  optional: the expected exit status (else 0)
# The program runs in its own folder so that relative file names work, and
# that folder is cut from the output so that reports naming the file match on
# any checkout.
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

# The machine charset follows the locale: the tests are written for UTF-8.
LC_ALL=C.UTF-8
export LC_ALL

actual=$(mktemp)
trap 'rm -f "$actual"' EXIT
cd "$dir" || exit 1
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
