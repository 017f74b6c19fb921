* COPY TO: the records in range in the work area's order, their memo
* bodies, and with WITH CDX the tags built for the copy.
CREATE TABLE src (code C(4), qty N(5,1), note M, born D)
FOR k = 1 TO 6
  APPEND BLANK
  REPLACE code WITH "c" + STR(7 - k, 1)
  REPLACE qty WITH k * 1.5
  REPLACE note WITH "note " + REPLICATE("x", k * 20)
  REPLACE born WITH DATE(2020, 1, k)
NEXT
GO 3
REPLACE note WITH "changed"
GO 4
DELETE
INDEX ON code TAG code
SET DELETED ON
SET FILTER TO qty < 8
GO 2
COPY TO dest WITH CDX
* The work area stays where it stood.
? recno(), alias()
USE dest
? reccount(), order()
SCAN
  ?? code, qty, LEFT(note, 8), LEN(note), born, deleted(), " "
ENDSCAN
?
SET ORDER TO code
SEEK "c6"
? found(), recno(), note
* Without WITH CDX the copy has no index file.
USE src
COPY TO plain
USE plain
? reccount(), ATAGINFO(t), FILE("plain.cdx")
SET DELETED OFF
? reccount()
* A table of that name is not overwritten.
USE src
TRY
  COPY TO plain
CATCH TO e
  ? e.errorno
ENDTRY
* A shared table may be copied too.
USE src SHARED
COPY TO fromshared
USE fromshared
? reccount()
? ADIR(a, "*~*")
