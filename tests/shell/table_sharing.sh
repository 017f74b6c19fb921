#!/bin/sh
# Four zosh processes share one table: each appends 2,500 records and, under
# record locks, adds to four counter records that all of them change. After
# them the table holds every record once and whole, every addition, and a
# header that counts exactly the records the file holds.
. "$(dirname "$0")/common.inc"

cat >setup.prg <<'PRG'
CREATE TABLE shared (worker N(2), seq N(6), payload C(40), hits N(8))
FOR k = 1 TO 4
  APPEND BLANK
  REPLACE worker WITH 0
  REPLACE seq WITH k
NEXT
PRG
cat >worker.prg <<'PRG'
PARAMETERS argc, argv
w = ASC(argv[2]) - 48
SET EXCLUSIVE OFF
USE shared
FOR i = 1 TO 2500
  APPEND BLANK
  REPLACE worker WITH w
  REPLACE seq WITH i
  REPLACE payload WITH REPLICATE(CHR(64 + w), 40)
  IF i % 10 = 0
    FOR k = 1 TO 4
      GO k
      DO WHILE !lock()
      ENDDO
      REPLACE hits WITH hits + 1
      UNLOCK
    NEXT
  ENDIF
NEXT
PRG
cat >verify.prg <<'PRG'
USE shared NOUPDATE
? "records:", reccount()
DIMENSION seen[4, 2500]
bad = 0
SCAN FOR worker > 0
  IF payload == REPLICATE(CHR(64 + worker), 40) AND seq >= 1 AND seq <= 2500 AND !seen[worker, seq]
    seen[worker, seq] = .T.
  ELSE
    bad = bad + 1
  ENDIF
ENDSCAN
missing = 0
FOR w = 1 TO 4
  FOR i = 1 TO 2500
    IF !seen[w, i]
      missing = missing + 1
    ENDIF
  NEXT
NEXT
? "bad:", bad, "missing:", missing
FOR k = 1 TO 4
  GO k
  ? "counter", k, hits
NEXT
PRG

"$zosh" setup.prg >setup.txt 2>&1
check "the table is made" '[ $? = 0 ] && [ -f shared.dbf ]'
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
check "every record is there once" 'grep -qx "records: 10004" verify.txt'
check "no record is torn or twice" 'grep -qx "bad: 0 missing: 0" verify.txt'
for k in 1 2 3 4; do
  check "counter $k holds all 1000 additions" 'grep -qx "counter $k 1000" verify.txt'
done
# The header read directly: the count, and records filling the file exactly.
python3 - shared.dbf >header.txt <<'PY'
import struct, sys, os
data = open(sys.argv[1], "rb").read(12)
count, header, length = struct.unpack("<IHH", data[4:12])
print(count, os.path.getsize(sys.argv[1]) == header + count * length)
PY
check "the header counts what the file holds" 'grep -qx "10004 True" header.txt'
exit $failed
