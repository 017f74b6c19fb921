* Rewrites a transaction could not undo are refused inside one, and the
* table is left as it was; so is ALTER TABLE of a table opened NOUPDATE.
CREATE TABLE t (id I, name C(6))
FOR k = 1 TO 3
  APPEND BLANK
  REPLACE id WITH k
NEXT
GO 2
DELETE
BEGIN TRANSACTION
REPLACE name WITH "inside"
attempt("PACK")
attempt("ZAP")
attempt("ALTER TABLE t ADD COLUMN extra C(3)")
attempt("ALTER TABLE t DROP COLUMN name")
* The work area is still open, inside the transaction, and ROLLBACK puts
* the record back.
? alias(), reccount(), AFIELDS(f), recno(), name
ROLLBACK
? name, deleted()
* COPY TO makes a new table and may run inside one.
BEGIN TRANSACTION
COPY TO snapshot
END TRANSACTION
* Outside a transaction the same commands run.
PACK
? reccount()
USE t EXCLUSIVE NOUPDATE
attempt("ALTER TABLE t ADD COLUMN extra C(3)")
* Still read-only, still open where it was.
? alias(), AFIELDS(f)
attempt('REPLACE name WITH "x"')
USE snapshot
? reccount()

PROCEDURE attempt(line)
TRY
  &line
CATCH TO e
  ? e.errorno, e.message
ENDTRY
