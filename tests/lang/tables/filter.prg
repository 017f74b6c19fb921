* SET FILTER hides records from every move: GO TOP, GO BOTTOM, SKIP both
* ways, SCAN and LOCATE; GO still reaches a hidden record.
CREATE CURSOR stock (item C(6), qty N(4))
FOR k = 1 TO 8
  APPEND BLANK
  REPLACE item WITH "i" + CHR(48 + k)
  REPLACE qty WITH k * 5
NEXT
limit = 12
SET FILTER TO qty > limit AND qty < 35
GO TOP
? "top:", recno(), item
SKIP
? "next:", recno()
GO BOTTOM
? "bottom:", recno(), item
SKIP
? "past:", eof(), recno()
SKIP -1
? "back:", recno()
seen = ""
SCAN
  seen = seen + CHR(48 + recno())
ENDSCAN
? "scan:", seen
LOCATE FOR qty < 20
? "locate:", recno(), found()
GO 1
? "go 1:", recno(), item
* The filter reads memory variables when it runs, not when it is set.
limit = 25
GO TOP
? "variable changed:", recno()
* A filter that hides everything leaves the table at its end.
SET FILTER TO qty > 1000
GO TOP
? "nothing passes:", eof(), bof()
SET FILTER TO
GO TOP
? "cleared:", recno()
* SET FILTER ... IN names another work area.
SELECT 0
SET FILTER TO qty = 40 IN stock
GO TOP IN stock
? "in:", recno("stock"), alias()
SELECT stock
SET FILTER TO
* A filter that is not logical is error 37 at the first move.
SET FILTER TO qty
TRY
  GO TOP
CATCH TO e
  ? e.errorno, e.message
ENDTRY
SET FILTER TO
* A filter given as macro text works as if written.
cond = "qty = 10"
SET FILTER TO &cond
GO TOP
? "macro:", recno(), item
