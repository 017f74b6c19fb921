* USE and SELECT: work area numbers, aliases, AGAIN, IN, NOUPDATE, and the
* functions that tell what is open where.
CREATE TABLE alpha (a N(2))
APPEND BLANK
CREATE TABLE beta (b C(2)) 
USE
? "closed:", used(1), alias(), select()
SET EXCLUSIVE OFF
USE alpha
? "alias from the name:", alias(), select(), used("alpha"), used(1)
? "dbf:", dbf()
SELECT 3
USE beta ALIAS bee
? "area 3:", alias(), select(), select("bee"), select("alpha"), select("nosuch")
* SELECT 0 and select(0): the lowest free work area.
? "lowest free:", select(0)
SELECT 0
? "selected:", select(), "[" + alias() + "]"
USE beta AGAIN ALIAS bee2
* USE ... IN opens elsewhere without selecting; IN 0 takes a free area.
USE alpha AGAIN IN 0 ALIAS second
? "in 0:", select(), select("second"), alias(4)
* The same file twice needs AGAIN; an alias twice is error 24.
TRY
  USE alpha IN 5 ALIAS third
CATCH TO e
  ? "again needed:", e.errorno, e.message
ENDTRY
TRY
  USE beta ALIAS alpha IN 6
CATCH TO e
  ? "alias in use:", e.errorno, e.message
ENDTRY
* A failed USE leaves the work area closed.
SELECT bee
TRY
  USE nosuch
CATCH TO e
  ? "missing:", e.errorno, e.message
ENDTRY
? "closed after failure:", used(3)
* EXCLUSIVE and SHARED together are refused before anything closes.
SELECT alpha
TRY
  USE alpha EXCLUSIVE SHARED
CATCH TO e
  ? "both:", e.errorno, used("alpha")
ENDTRY
* USE IN closes another work area; USE alone closes the current one.
USE IN second
? "use in:", used("second"), used(4)
USE
? "use:", used(1), alias()
* NOUPDATE opens for reading only.
USE alpha NOUPDATE
? "read only:", a
TRY
  REPLACE a WITH 5
CATCH TO e
  ? e.errorno, e.message
ENDTRY
? "still:", a
* Unknown aliases and work area numbers out of range.
TRY
  SELECT nosuch
CATCH TO e
  ? e.errorno, e.message
ENDTRY
TRY
  ? used(0)
CATCH TO e
  ? "used(0):", e.errorno, e.message
ENDTRY
TRY
  ? used(32768)
CATCH TO e
  ? "used(32768):", e.errorno
ENDTRY
TRY
  SELECT 32768
CATCH TO e
  ? "select 32768:", e.errorno
ENDTRY
* The alias of a work area reads its fields from anywhere.
SELECT 2
? "from area 2:", alpha.a, alpha->a, alias(), recno("alpha"), reccount("alpha"), eof("alpha")
