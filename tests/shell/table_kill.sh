#!/bin/sh
# A writer killed with SIGKILL in the middle of its appends, once sharing
# its table and once holding it alone: the table opens again, and every
# record its header counts is there and whole.
. "$(dirname "$0")/common.inc"

cat >writer.prg <<'PRG'
PARAMETERS argc, argv
IF argv[2] == "exclusive"
  SET EXCLUSIVE ON
ELSE
  SET EXCLUSIVE OFF
ENDIF
USE victim
FOR i = 1 TO 5000000
  APPEND BLANK
  REPLACE seq WITH i
  REPLACE payload WITH REPLICATE("x", 60)
NEXT
PRG
# Each REPLACE is written on its own, so the last record may still lack the
# values that came after its APPEND BLANK; every record before it is
# complete. A record past the header's count (written, the header not yet)
# may show as well, as far as it got.
cat >verify.prg <<'PRG'
USE victim NOUPDATE
bad = 0
last = reccount()
SCAN
  whole = seq == recno() AND payload == REPLICATE("x", 60)
  begun = INLIST(seq, 0, recno()) AND (EMPTY(payload) OR payload == REPLICATE("x", 60))
  IF !(whole OR (recno() >= last AND begun))
    bad = bad + 1
  ENDIF
ENDSCAN
? "counted:", reccount() > 0, "bad:", bad
PRG

for mode in shared exclusive; do
  rm -f victim.dbf
  printf 'CREATE TABLE victim (seq N(8), payload C(60))\n' >setup.prg
  "$zosh" setup.prg >/dev/null 2>&1
  "$zosh" writer.prg $mode >writer.txt 2>&1 &
  pid=$!
  # Until a good part of the table is written, for at most 30 seconds.
  waited=0
  while [ "$(stat -c %s victim.dbf)" -lt 400000 ] && [ $waited -lt 300 ]; do
    sleep 0.1
    waited=$((waited + 1))
  done
  kill -9 $pid
  wait $pid 2>/dev/null
  "$zosh" verify.prg >verify.txt 2>&1
  cat verify.txt
  check "$mode: every counted record reads back whole" 'grep -qx "counted: true bad: 0" verify.txt'
  python3 - victim.dbf >header.txt <<'PY'
import os, struct, sys
data = open(sys.argv[1], "rb").read(12)
count, header, length = struct.unpack("<IHH", data[4:12])
print(os.path.getsize(sys.argv[1]) >= header + count * length)
PY
  check "$mode: the file holds every record the header counts" 'grep -qx True header.txt'
done
exit $failed
