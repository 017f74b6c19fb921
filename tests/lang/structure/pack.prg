* PACK and ZAP: the deleted records go, the memo file keeps only live
* bodies, every tag is built again, and the order stays selected.
CREATE TABLE notes (id I, name C(8), body M, pic W NULL)
FOR k = 1 TO 12
  APPEND BLANK
  REPLACE id WITH 13 - k
  REPLACE name WITH "n" + LTRIM(STR(k))
  REPLACE body WITH REPLICATE(CHR(64 + k), 100 * k)
  IF k % 3 = 0
    REPLACE pic WITH 0h00FF10 + CHR(k)
  ENDIF
NEXT
* A memo written twice leaves a dead body behind.
GO 2
REPLACE body WITH "second"
INDEX ON id TAG id
INDEX ON name TAG name FOR id > 3
SET ORDER TO
SCAN
  IF id % 2 = 0
    DELETE
  ENDIF
ENDSCAN
before = ADIR(a, "notes.fpt")
oldsize = a[1, 2]
SET ORDER TO id
PACK
? reccount(), order(), recno()
ADIR(a, "notes.fpt")
? a[1, 2] < oldsize
SCAN
  ?? id, TRIM(name), LEN(body), LEFT(body, 3), LEN(pic), " "
ENDSCAN
?
GO 3
? id, body == REPLICATE("F", 600), pic == 0h00FF10 + CHR(6)
SEEK 7
? found(), name, LEN(body)
SET ORDER TO name
GO TOP
SCAN
  ?? TRIM(name), " "
ENDSCAN
?
* The tags hold the packed record numbers after the table is opened again.
USE notes
SET ORDER TO id
SEEK 11
? found(), recno(), name
* Appends after PACK land after the kept records.
APPEND BLANK
REPLACE id WITH 99
REPLACE body WITH "new"
? reccount(), recno()
SEEK 99
? found(), body
* Nothing deleted: PACK keeps every record.
PACK
? reccount()
ZAP
? reccount(), eof(), order()
ADIR(a, "notes.fpt")
? a[1, 2]
APPEND BLANK
REPLACE id WITH 1
REPLACE body WITH "after zap"
SEEK 1
? found(), body
* Only an exclusive user may rewrite the table.
USE notes SHARED
TRY
  PACK
CATCH TO e
  ? e.errorno, e.message
ENDTRY
TRY
  ZAP
CATCH TO e
  ? e.errorno
ENDTRY
? reccount()
USE
? ADIR(a, "notes~*")
* A read-only table is not rewritten; a cursor in memory is not either.
USE notes EXCLUSIVE NOUPDATE
TRY
  ZAP
CATCH TO e
  ? e.errorno
ENDTRY
? reccount()
CREATE CURSOR cc (a I)
TRY
  PACK
CATCH TO e
  ? e.errorno, e.message
ENDTRY
