* SET KEY TO keeps the walks of the order inside a range of keys.
CREATE TABLE t (name C(6), n N(3))
FOR k = 1 TO 9
  APPEND BLANK
  REPLACE name WITH CHR(64 + k) + "x"
  REPLACE n WITH 10 - k
NEXT
INDEX ON n TAG n
INDEX ON name TAG name
* One value: the records whose key begins with it.
SET KEY TO "C"
? "C:", recno(), name, eof()
SKIP
? "after:", eof(), recno()
TRY
  SKIP
CATCH TO e
  ? "skip at end:", e.errorno
ENDTRY
* A range, both ends in; the walk, GO BOTTOM and a count.
SET KEY TO RANGE "B", "Dx"
c = 0
SCAN
  ?? name
  c = c + 1
ENDSCAN
?
? "count:", c
GO BOTTOM
? "bottom:", name
SKIP -1
SKIP -1
SKIP -1
? "bof:", bof()
* Only a low end, only a high end.
SET KEY TO RANGE "G",
GO TOP
? "low only:", name
GO BOTTOM
? name
SET KEY TO RANGE , "Bx"
SCAN
  ?? name
ENDSCAN
?
* SEEK finds nothing outside the scope, with SET NEAR the cursor ends at the end.
SET KEY TO RANGE "C", "E"
SEEK "A"
? "seek A:", found(), eof()
SEEK "Dx"
? "seek Dx:", found(), name
SET NEAR ON
SEEK "F"
? "near F:", found(), eof()
SET NEAR OFF
* Deleted records are passed over inside the scope.
SET DELETED ON
SEEK "Cx"
DELETE
GO TOP
? "first not deleted:", name
SET DELETED OFF
* A descending order walks the same keys from the other end.
SET ORDER TO name DESCENDING
SET KEY TO RANGE "C", "E"
SCAN
  ?? name
ENDSCAN
?
* A numeric tag; a new order ends the scope.
SET ORDER TO n
SET KEY TO 5
? "n=5:", name, n
SET KEY TO RANGE 7, 8
SCAN
  ?? n
ENDSCAN
?
SET ORDER TO name
c = 0
SCAN
  c = c + 1
ENDSCAN
? "no scope after SET ORDER:", c
* SET KEY TO alone ends the scope; the cursor stays where it is.
SET ORDER TO n
SET KEY TO RANGE 2, 3
GO TOP
SET KEY TO
SKIP 3
? "after clear:", n
* A scope needs an order, and the key kind of the order.
SET ORDER TO
TRY
  SET KEY TO "A"
CATCH TO e
  ? e.errorno
ENDTRY
SET ORDER TO n
TRY
  SET KEY TO "A"
CATCH TO e
  ? e.errorno
ENDTRY
USE
