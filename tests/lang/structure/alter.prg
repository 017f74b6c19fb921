* ALTER TABLE ADD COLUMN and DROP COLUMN: values, memo bodies, deleted
* marks, nulls and autoincrement values carry over; tags are built again,
* and a change that would break one is refused (1531) with nothing changed.
CREATE TABLE t (id I, name C(6), txt M, n N(5,1) NULL)
FOR k = 1 TO 4
  APPEND BLANK
  REPLACE id WITH k
  REPLACE name WITH "nm" + STR(k, 1)
  REPLACE txt WITH "memo" + STR(k, 1)
NEXT
GO 2
REPLACE n WITH .NULL.
DELETE
INDEX ON name TAG name
INDEX ON id TAG id FOR id > 1
ALTER TABLE t ADD COLUMN extra C(3)
? alias(), order(), reccount(), AFIELDS(fl), fl[5, 1]
GO 3
? id, name, txt, ISNULL(n), extra
REPLACE extra WITH "abc"
SET ORDER TO name
SEEK "nm3"
? found(), extra, deleted()
GO 2
? deleted(), ISNULL(n), txt
* A variable named like the column does not keep its tag alive.
name = "shadow"
TRY
  ALTER TABLE t DROP COLUMN name
CATCH TO e
  ? e.errorno, e.message
ENDTRY
? AFIELDS(fl), name
ALTER TABLE t DROP COLUMN txt
? AFIELDS(fl), FILE("t.fpt")
ALTER TABLE t DROP COLUMN extra
TRY
  ALTER TABLE t DROP COLUMN nothing
CATCH TO e
  ? e.errorno
ENDTRY
CREATE TABLE one (a I)
TRY
  ALTER TABLE one DROP COLUMN a
CATCH TO e
  ? e.errorno, e.message
ENDTRY
USE one SHARED
TRY
  ALTER TABLE one ADD COLUMN b I
CATCH TO e
  ? e.errorno
ENDTRY
USE
ALTER TABLE one ADD COLUMN b I
USE one
? AFIELDS(fl), fl[2, 1]
? ADIR(a, "*~*")
* Autoincrement values stay; the next one follows them.
CREATE TABLE ai (k I AUTOINC, v C(2))
FOR i = 1 TO 3
  APPEND BLANK
  REPLACE v WITH STR(i, 2)
NEXT
GO 2
DELETE
PACK
ALTER TABLE ai ADD COLUMN w L
GO TOP
SCAN
  ?? k, v, w, " "
ENDSCAN
APPEND BLANK
? k
