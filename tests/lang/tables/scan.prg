* SCAN: FOR skips records, WHILE ends the loop, REST starts where the
* cursor stands, the loop's work area comes back every round, and an error
* inside the loop unwinds cleanly.
CREATE CURSOR items (n N(3), kind C(1))
FOR i = 1 TO 6
  APPEND BLANK
  REPLACE n WITH i
  REPLACE kind WITH IIF(i % 2 = 0, "e", "o")
NEXT
total = 0
SCAN
  total = total + n
ENDSCAN
? "all:", total, eof()
seen = ""
SCAN FOR kind = "e"
  seen = seen + CHR(48 + n)
ENDSCAN
? "for:", seen
* WHILE (like REST) starts at the current record, not at the top.
GO TOP
seen = ""
SCAN WHILE n < 4
  seen = seen + CHR(48 + n)
ENDSCAN
? "while:", seen, "and the cursor stays on", recno()
seen = ""
SCAN WHILE n < 4
  seen = seen + CHR(48 + n)
ENDSCAN
? "while again:", "[" + seen + "]"
GO 4
seen = ""
SCAN REST
  seen = seen + CHR(48 + n)
ENDSCAN
? "rest:", seen
GO TOP
seen = ""
SCAN FOR n > 1 WHILE n < 5
  seen = seen + CHR(48 + n)
ENDSCAN
? "for and while:", seen
* The body may select another work area; each round returns to the loop's.
SELECT 0
CREATE CURSOR log (msg C(10))
SELECT items
SCAN FOR n <= 2
  SELECT log
  APPEND BLANK
  REPLACE msg WITH "seen"
ENDSCAN
? "rounds logged:", reccount("log"), "area:", alias()
* EXIT and LOOP.
seen = ""
SCAN
  IF n = 2
    LOOP
  ENDIF
  IF n = 5
    EXIT
  ENDIF
  seen = seen + CHR(48 + n)
ENDSCAN
? "loop and exit:", seen, "cursor on", recno()
* An error in the body ends the loop through TRY; the table is usable after.
TRY
  SCAN
    IF n = 3
      ERROR "stop at three"
    ENDIF
  ENDSCAN
CATCH TO e
  ? "caught:", e.message, recno()
ENDTRY
SKIP
? "after the error:", recno(), n
* Nested scans over two work areas.
SELECT log
counts = ""
SCAN
  SELECT items
  count = 0
  SCAN FOR kind = "o"
    count = count + 1
  ENDSCAN
  counts = counts + CHR(48 + count)
ENDSCAN
? "nested:", counts, alias()
* A SCAN without a table is error 52.
SELECT 0
TRY
  SCAN
  ENDSCAN
CATCH TO e
  ? "no table:", e.errorno
ENDTRY
* A body that closes the loop's table ends the loop at its next round, and
* a scan over records all hidden by SET DELETED runs no round at all.
CREATE CURSOR closing (n N(3))
FOR i = 1 TO 3
  APPEND BLANK
  REPLACE n WITH i
NEXT
TRY
  SCAN
    ? "round", n
    USE
  ENDSCAN
CATCH TO e
  ? "closed:", e.errorno, used("closing")
ENDTRY
CREATE CURSOR hidden (n N(3))
APPEND BLANK
DELETE
APPEND BLANK
DELETE
SET DELETED ON
SCAN
  ? "never"
ENDSCAN
? "all hidden:", recno(), eof()
SET DELETED OFF
