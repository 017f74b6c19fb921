* MKDIR, CD, DELETE FILE and DROP TABLE.
MKDIR "sub/deeper"
CD sub
CREATE TABLE inner (x N(1))
? "created in:", dbf()
USE
CD ..
USE "sub/inner"
? "opened from above:", alias(), reccount()
* A table that is open cannot be dropped; a closed one goes with its memo file.
TRY
  DROP TABLE "sub/inner"
CATCH TO e
  ? "open:", e.errorno
ENDTRY
USE
DROP TABLE "sub/inner"
TRY
  USE "sub/inner"
CATCH TO e
  ? "dropped:", e.errorno
ENDTRY
CREATE TABLE memos (m M)
USE
DROP TABLE memos
TRY
  DROP TABLE memos
CATCH TO e
  ? "twice:", e.errorno, e.message
ENDTRY
CREATE TABLE plain (x N(1))
USE
DELETE FILE plain.dbf
TRY
  DELETE FILE plain.dbf
CATCH TO e
  ? "deleted:", e.errorno, e.message
ENDTRY
TRY
  CD nowhere
CATCH TO e
  ? "cd:", e.errorno, e.message
ENDTRY
TRY
  MKDIR sub
CATCH TO e
  ? "mkdir:", e.errorno, e.message
ENDTRY
