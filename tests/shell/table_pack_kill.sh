#!/bin/sh
# PACK of a large table killed with SIGKILL while it writes the new table,
# while it builds the new tags, and (as the files show it) between renaming
# the new files into place: the table opens afterwards either as it was or
# packed, its memo bodies and its tag matching its records.
. "$(dirname "$0")/common.inc"

cat >setup.prg <<'PRG'
CREATE TABLE big (seq N(8), note M)
FOR i = 1 TO 200000
  APPEND BLANK
  REPLACE seq WITH i
  REPLACE note WITH "body" + LTRIM(STR(i))
  IF i % 3 = 0
    DELETE
  ENDIF
NEXT
INDEX ON seq TAG seq
PRG
cat >packer.prg <<'PRG'
USE big EXCLUSIVE
PACK
PRG
# Old: 200,000 records, every third deleted. Packed: 133,334, none deleted.
cat >verify.prg <<'PRG'
USE big
bad = 0
n = 0
SCAN
  n = n + 1
  IF !(note == "body" + LTRIM(STR(seq))) OR deleted() != (seq % 3 = 0)
    bad = bad + 1
  ENDIF
ENDSCAN
SET ORDER TO seq
FOR k = 1 TO 199999 STEP 7919
  SEEK k
  IF IIF(reccount() = 200000 OR k % 3 != 0, !found() OR seq != k, found())
    bad = bad + 1
  ENDIF
NEXT
? "whole:", INLIST(reccount(), 200000, 133334) AND n = reccount(), "bad:", bad
PRG

"$zosh" setup.prg >setup.txt 2>&1
cp big.dbf big.dbf.orig; cp big.fpt big.fpt.orig; cp big.cdx big.cdx.orig
# The kill points: the new table half written, the new tags being built.
for stage in dbf cdx; do
  cp big.dbf.orig big.dbf; cp big.fpt.orig big.fpt; cp big.cdx.orig big.cdx
  rm -f big~*
  "$zosh" packer.prg >packer.txt 2>&1 &
  pid=$!
  waited=0
  while [ $waited -lt 600 ]; do
    if [ $stage = dbf ]; then
      size=$(stat -c %s big~new*.dbf 2>/dev/null || echo 0)
      [ "${size:-0}" -gt 1000000 ] && break
    else
      ls big~new*.cdx >/dev/null 2>&1 && break
    fi
    kill -0 $pid 2>/dev/null || break
    sleep 0.01
    waited=$((waited + 1))
  done
  kill -9 $pid 2>/dev/null
  wait $pid 2>/dev/null
  "$zosh" verify.prg >verify.txt 2>&1
  cat verify.txt
  check "$stage: the table is whole after the kill" 'grep -qx "whole: true bad: 0" verify.txt'
done
# A PACK left alone to finish gives the packed table.
cp big.dbf.orig big.dbf; cp big.fpt.orig big.fpt; cp big.cdx.orig big.cdx
rm -f big~*
"$zosh" packer.prg >packer.txt 2>&1
printf 'USE big\n? reccount()\n' >count.prg
check "a finished PACK keeps 133334 records" '[ "$("$zosh" count.prg)" = "133334" ]'
"$zosh" verify.prg >verify.txt 2>&1
check "the finished PACK is whole" 'grep -qx "whole: true bad: 0" verify.txt'
# A kill between the renames: the new memo and index files are in place, the
# new table still under its temporary name beside the old one, the marker
# naming it. The next open finishes the swap.
cp big.dbf big~new1.dbf
cp big.dbf.orig big.dbf
printf 'big~new1.dbf\ncdx fpt \n' >big~swap
"$zosh" verify.prg >verify.txt 2>&1
cat verify.txt
check "rename: the interrupted swap is finished on open" '[ "$("$zosh" count.prg)" = "133334" ] && grep -qx "whole: true bad: 0" verify.txt'
check "rename: nothing temporary is left" '! ls big~* >/dev/null 2>&1'
exit $failed
