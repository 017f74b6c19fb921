* LOCATE and CONTINUE: the FOR condition compiled for the table, WHILE that
* ends the search, REST from the current record, found() and the end.
CREATE CURSOR people (name C(8), age N(3))
FOR i = 1 TO 6
  APPEND BLANK
  REPLACE name WITH "p" + CHR(64 + i)
  REPLACE age WITH i * 10
NEXT
LOCATE FOR age > 25
? "first:", recno(), name, found(), eof()
CONTINUE
? "continue:", recno(), name, found()
* A variable of a field's name is hidden by the field; m. reaches it.
age = 55
LOCATE FOR age > m.age
? "field before variable:", recno(), found()
CONTINUE
? "after the last match:", recno(), found(), eof()
TRY
  CONTINUE
CATCH TO e
  ? "continue at eof:", e.errorno
ENDTRY
LOCATE FOR name = "nobody"
? "no match:", recno(), found(), eof()
* WHILE stops the search at the first record where it fails.
GO TOP
LOCATE FOR age = 50 WHILE age < 30
? "while stops:", recno(), found()
* REST starts at the current record instead of the top.
GO 5
LOCATE FOR age < 30 REST
? "rest:", found(), eof()
GO 2
LOCATE FOR age > 10 REST
? "rest from 2:", recno(), found()
* The condition must be logical.
TRY
  LOCATE FOR age
CATCH TO e
  ? "not logical:", e.errorno, e.message
ENDTRY
* CONTINUE in another work area knows nothing of this search.
SELECT 0
CREATE CURSOR other (x N(1))
APPEND BLANK
CONTINUE
? "continue without locate:", found(), eof()
SELECT people
? "back:", alias(), found()
