#!/bin/sh
# Four zosh processes append to and change one shared table with three live
# tags. Afterwards every tag walks exactly as the same tag built again by
# REINDEX, and the tags hold every record that their conditions take. Every
# tenth record all four claim the same candidate key at once: one of them
# gets it, the others are refused.
. "$(dirname "$0")/common.inc"

cat >setup.prg <<'PRG'
CREATE TABLE shared (worker N(2), seq N(6), name C(12), hits N(8), claim N(6))
INDEX ON worker * 100000 + seq TAG id
INDEX ON UPPER(name) TAG name
INDEX ON seq TAG odd FOR seq % 2 = 1 DESCENDING
INDEX ON claim TAG claim FOR claim > 0 CANDIDATE
PRG
cat >worker.prg <<'PRG'
PARAMETERS argc, argv
w = ASC(argv[2]) - 48
SET EXCLUSIVE OFF
USE shared
FOR i = 1 TO 1000
  APPEND BLANK
  REPLACE worker WITH w
  REPLACE seq WITH i
  REPLACE name WITH CHR(97 + (i * 7 + w) % 26) + "x" + STR(i, 4)
  IF i % 10 = 0
    TRY
      REPLACE claim WITH i
    CATCH TO e
      IF e.errorno != 1884
        ? "claim refused with", e.errorno
      ENDIF
    ENDTRY
  ENDIF
  IF i % 20 = 0
    * An earlier record of this worker gets another name.
    SET ORDER TO id
    SEEK w * 100000 + i - 10
    DO WHILE !lock()
    ENDDO
    REPLACE name WITH "renamed" + STR(i, 4)
    UNLOCK
    SET ORDER TO
  ENDIF
NEXT
PRG
cat >verify.prg <<'PRG'
USE shared
? "records:", reccount()
a = walk("id")
b = walk("name")
c = walk("odd")
? "odd keys:", LEN(c) / 6
? "claims:", LEN(walk("claim")) / 6
REINDEX
? "id same:", a == walk("id")
? "name same:", b == walk("name")
? "odd same:", c == walk("odd")

FUNCTION walk(tag)
  LOCAL out
  out = ""
  SET ORDER TO (tag)
  SCAN
    out = out + STR(recno(), 6)
  ENDSCAN
  RETURN out
ENDFUNC
PRG

"$zosh" setup.prg >setup.txt 2>&1
check "the table is made" '[ $? = 0 ] && [ -f shared.cdx ]'
cat setup.txt
pids=""
for w in 1 2 3 4; do
  timeout 240 "$zosh" worker.prg $w >worker$w.txt 2>&1 &
  pids="$pids $!"
done
for pid in $pids; do
  wait "$pid"
  status=$?
  check "worker $pid ends well" '[ $status = 0 ]'
done
cat worker*.txt
"$zosh" verify.prg >verify.txt 2>&1
cat verify.txt
check "every record is there" 'grep -qx "records: 4000" verify.txt'
check "the FOR tag holds the odd records" 'grep -qx "odd keys: 2000" verify.txt'
check "each claim went to one worker" 'grep -qx "claims: 100" verify.txt && ! grep -q "1884" verify.txt'
for tag in id name odd; do
  check "tag $tag equals its rebuild" 'grep -qx "$tag same: true" verify.txt'
done
exit $failed
