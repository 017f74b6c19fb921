* BEGIN TRANSACTION, END TRANSACTION and ROLLBACK: a rollback puts back
* every record the transaction wrote and drops the records it appended, in
* every work area of the session.
CREATE TABLE ledger (entry C(6), amount N(6))
FOR k = 1 TO 3
  APPEND BLANK
  REPLACE entry WITH "e" + CHR(48 + k)
  REPLACE amount WITH k * 100
NEXT
SELECT 0
CREATE CURSOR notes (text C(10))
APPEND BLANK
REPLACE text WITH "before"
SELECT ledger
BEGIN TRANSACTION
GO 2
REPLACE amount WITH 999
REPLACE amount WITH 888
APPEND BLANK
REPLACE entry WITH "new"
REPLACE notes.text WITH "during"
SELECT notes
APPEND BLANK
SELECT ledger
? "inside:", reccount(), reccount("notes"), notes.text
ROLLBACK
? "rolled back:", reccount(), reccount("notes"), eof()
GO 2
? "record 2:", entry, amount
GO 1 IN notes
? "notes:", notes.text
* END TRANSACTION keeps what was written.
BEGIN TRANSACTION
REPLACE amount WITH 250
APPEND BLANK
REPLACE entry WITH "kept"
END TRANSACTION
? "committed:", reccount(), entry
GO 2
? "record 2:", amount
* Transactions do not nest; END and ROLLBACK need a BEGIN.
BEGIN TRANSACTION
TRY
  BEGIN TRANSACTION
CATCH TO e
  ? e.errorno, e.message
ENDTRY
END TRANSACTION
TRY
  END TRANSACTION
CATCH TO e
  ? e.errorno
ENDTRY
TRY
  ROLLBACK
CATCH TO e
  ? e.errorno
ENDTRY
* A table opened during the transaction takes part in it.
USE
BEGIN TRANSACTION
USE ledger
APPEND BLANK
ROLLBACK
? "opened inside:", reccount()
* What survives reopening.
USE
USE ledger
SCAN
  ?? entry, amount, ""
ENDSCAN
?
