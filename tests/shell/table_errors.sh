#!/bin/sh
# Tables that cannot be opened reach the language as numbered errors with
# their texts: a damaged header, a file that is no table, a missing memo
# file, and a table that another process holds exclusively.
. "$(dirname "$0")/common.inc"

cat >make.prg <<'PRG'
CREATE TABLE good (name C(8))
APPEND BLANK
CREATE TABLE memo (m M)
PRG
"$zosh" make.prg >make.txt 2>&1
check "the tables are made" '[ $? = 0 ] && [ -f good.dbf ] && [ -f memo.fpt ]'

# try FILE: the number and the text of the error USE FILE raises
try_use() {
  printf 'TRY\n  USE %s\n  ? "opened"\nCATCH TO e\n  ? e.errorno, e.message\nENDTRY\n' "$1" >try.prg
  "$zosh" try.prg 2>&1 | sed "s|$work/||g"
}

cp good.dbf counted.dbf
printf '\011' | dd of=counted.dbf bs=1 seek=4 conv=notrunc 2>/dev/null
out=$(try_use counted)
check "a wrong record count is corruption ($out)" \
  '[ "$out" = "2091 Table '"'"'counted.dbf'"'"' has become corrupted. The table will need to be repaired before using again." ]'

cp good.dbf short.dbf
printf '\377' | dd of=short.dbf bs=1 seek=8 conv=notrunc 2>/dev/null
out=$(try_use short)
check "a wrong header length is corruption ($out)" '[ "${out%% *}" = 2091 ]'

printf 'plain text, no table, and long enough for a header' >text.dbf
out=$(try_use text)
check "a file that is no table ($out)" '[ "$out" = "15 text.dbf is not a table." ]'

rm memo.fpt
out=$(try_use memo)
check "a missing memo file ($out)" '[ "$out" = "41 Memo file memo.dbf is missing or is invalid." ]'

out=$(try_use nothere)
check "a missing table ($out)" '[ "$out" = "1 File '"'"'nothere'"'"' does not exist." ]'

# Another process holds good.dbf exclusively until it reads QUIT.
mkfifo commands
"$zosh" <commands >holder.txt 2>&1 &
holder=$!
exec 3>commands
printf 'USE good EXCLUSIVE\n? "held"\n' >&3
waited=0
while ! grep -q held holder.txt && [ $waited -lt 100 ]; do sleep 0.1; waited=$((waited + 1)); done
out=$(try_use good)
check "a table held exclusively elsewhere ($out)" '[ "$out" = "1705 File access denied good.dbf." ]'
printf 'SET EXCLUSIVE OFF\nUSE good\n' >try.prg
"$zosh" try.prg >shared.txt 2>&1
check "not even shared" 'grep -q "^(Runtime error) 1705" shared.txt'
printf 'QUIT\n' >&3
exec 3>&-
wait $holder
out=$(try_use good)
check "free again once the holder ends ($out)" '[ "$out" = "opened" ]'
exit $failed
