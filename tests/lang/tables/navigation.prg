* Moving through a table in file order: both ends, the flags, the record
* number past the end, and the errors of moves that cannot be made.
CREATE TABLE nav (n N(3))
? "empty:", bof(), eof(), recno(), reccount()
GO BOTTOM
? "bottom of empty:", bof(), eof(), recno()
TRY
  SKIP
CATCH TO e
  ? "skip on empty:", e.errorno
ENDTRY
FOR i = 1 TO 5
  APPEND BLANK
  REPLACE n WITH i * 10
NEXT
GO TOP
? "top:", recno(), n, bof(), eof()
SKIP 2
? "skip 2:", recno(), n
SKIP -1
? "skip -1:", recno(), n
GO BOTTOM
? "bottom:", recno(), n
SKIP
? "past the end:", recno(), eof(), n
TRY
  SKIP
CATCH TO e
  ? "skip at eof:", e.errorno, e.message
ENDTRY
SKIP -1
? "back from eof:", recno(), n, eof()
GO TOP
SKIP -1
? "before the first:", recno(), bof(), n
TRY
  SKIP -1
CATCH TO e
  ? "skip at bof:", e.errorno, e.message
ENDTRY
* At the beginning of the file the first record is shown, and takes changes.
REPLACE n WITH 11
GO TOP
? "changed at bof:", recno(), n
GO 3
? "go 3:", recno(), n
GOTO RECORD 4
? "goto record 4:", recno(), n
TRY
  GO 6
CATCH TO e
  ? "go 6:", e.errorno, e.message
ENDTRY
TRY
  GO 0
CATCH TO e
  ? "go 0:", e.errorno
ENDTRY
? "after failed go:", recno(), n
SKIP 10
? "skip 10:", recno(), eof()
GO TOP
SKIP -10
? "skip -10:", recno(), bof()
TRY
  SKIP 0
CATCH TO e
  ? "skip 0:", e.errorno
ENDTRY
x = NULL
GO TOP
SKIP x
? "skip null:", recno()
