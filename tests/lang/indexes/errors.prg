* What INDEX ON, SET ORDER TO and the tags refuse.
CREATE TABLE t (code C(4), v N(3))
FOR k = 1 TO 3
  APPEND BLANK
  REPLACE code WITH "c" + STR(k, 1)
  REPLACE v WITH k
NEXT
INDEX ON code TAG code CANDIDATE
TRY
  INDEX ON v TAG toolongname1
CATCH TO e
  ? e.errorno, e.message
ENDTRY
TRY
  INDEX ON v TAG "bad-name"
CATCH TO e
  ? e.errorno, e.message
ENDTRY
TRY
  INDEX ON v TAG Code
CATCH TO e
  ? e.errorno
ENDTRY
TRY
  SET ORDER TO nothing
CATCH TO e
  ? e.errorno, e.message
ENDTRY
* A second record with a candidate key is refused and nothing changes.
GO TOP
TRY
  REPLACE code WITH "c2"
CATCH TO e
  ? e.errorno, e.message
ENDTRY
GO TOP
? code, reccount()
TRY
  INDEX ON v % 2 TAG parity UNIQUE
CATCH TO e
  ? e.errorno
ENDTRY
? ataginfo(tags), tags[1, 1], tags[1, 2]
TRY
  INDEX ON v TAG bad FOR v
CATCH TO e
  ? e.errorno
ENDTRY
* REINDEX builds every tag again; DELETE TAG ALL drops the file.
REINDEX
SET ORDER TO code
GO BOTTOM
? code
DELETE TAG ALL
? ataginfo(tags), order(), file("t.cdx")
