* RENAME TABLE moves the table with its memo and index files; it refuses
* a table in use and a name that is taken.
CREATE TABLE old (id I, txt M)
APPEND BLANK
REPLACE id WITH 7
REPLACE txt WITH "memo body"
INDEX ON id TAG id
TRY
  RENAME TABLE old TO new
CATCH TO e
  ? e.errorno
ENDTRY
USE
RENAME TABLE old TO new
? FILE("old.dbf"), FILE("old.fpt"), FILE("old.cdx"), FILE("new.dbf"), FILE("new.fpt"), FILE("new.cdx")
USE new
SET ORDER TO id
SEEK 7
? found(), txt
USE
CREATE TABLE other (a I)
USE
TRY
  RENAME TABLE other TO new
CATCH TO e
  ? e.errorno
ENDTRY
TRY
  RENAME TABLE missing TO elsewhere
CATCH TO e
  ? e.errorno
ENDTRY
