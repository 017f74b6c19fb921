* APPEND BLANK in an exclusive and in a shared table, into another work
* area, and what the new record holds.
CREATE TABLE appended (id I AUTOINC, name C(4), qty N(3), at D)
? "exclusive:", reccount(), recno(), eof()
APPEND BLANK
? "first:", reccount(), recno(), id, "[" + name + "]", qty, EMPTY(at), eof(), bof()
REPLACE name WITH "one"
APPEND BLANK
REPLACE name WITH "two"
? "second:", reccount(), recno(), id, name
GO TOP
? "top:", recno(), id, name
* Closed and opened shared: the records and the next value survive.
USE
USE appended SHARED
? "shared:", reccount()
APPEND BLANK
? "third:", reccount(), recno(), id
* Another work area sees the appended record at once.
USE appended AGAIN ALIAS other IN 0 SHARED
? "other sees:", reccount("other")
SELECT other
GO BOTTOM
? "other bottom:", recno(), id
* APPEND BLANK IN: the record goes to that work area, the current one stays.
APPEND BLANK IN appended
? "in:", alias(), reccount("appended"), recno("appended")
SELECT appended
? "id of the fourth:", id
* Only the BLANK form exists.
TRY
  APPEND NOMENU
CATCH TO e
  ? e.errorno, e.message
ENDTRY
* A cursor appends in memory.
CREATE CURSOR scratch (x N(2))
FOR k = 1 TO 3
  APPEND BLANK
  REPLACE x WITH k
NEXT
? "cursor:", reccount(), x
USE
SELECT 0
TRY
  APPEND BLANK
CATCH TO e
  ? "no table:", e.errorno, e.message
ENDTRY
