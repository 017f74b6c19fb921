* COPY TO with FIELDS, FOR, WHILE and the scope clauses: which records and
* columns the copy gets, memo bodies of the chosen memo fields, and which
* tags WITH CDX keeps.
CREATE TABLE src (code C(4), qty N(5,1), note M, born D, tally I)
FOR k = 1 TO 8
  APPEND BLANK
  REPLACE code WITH "c" + STR(9 - k, 1)
  REPLACE qty WITH k * 1.5
  REPLACE tally WITH k * 10
  REPLACE note WITH "note" + STR(k, 1) + REPLICATE("x", k * 30)
  REPLACE born WITH DATE(2021, 3, k)
NEXT
GO 6
DELETE
INDEX ON code TAG code
INDEX ON qty TAG qty FOR tally > 20
INDEX ON LEFT(note, 5) + code TAG mixed
INDEX ON "qty" + code TAG quoted
INDEX ON tally TAG tally
SET ORDER TO

* FIELDS picks and orders the columns; the memo body comes along.
GO 3
COPY TO picked FIELDS tally, note, code
? recno()
USE picked
? reccount(), AFIELDS(f), f[1, 1], f[2, 1], f[3, 1], f[2, 2], FILE("picked.fpt")
GO 8
? code, tally, LEFT(note, 5), LEN(note), deleted()
GO 6
? code, deleted()
USE src
* Without a memo field the copy has no memo file.
COPY TO nomemo FIELDS code, qty
USE nomemo
? AFIELDS(f), FILE("nomemo.fpt"), code, qty
USE src

* FOR filters; the whole table is its scope.
GO 5
COPY TO big FOR qty > 7 .AND. !DELETED()
USE big
? reccount(), recno()
SCAN
  ?? code, qty, " "
ENDSCAN
?
USE src
* WHILE without a scope starts on the current record and stops at the
* first record where it fails; with ALL it starts at the top.
GO 2
COPY TO whiled WHILE qty < 6
USE whiled
? reccount(), code
USE src
GO 4
COPY TO whileall WHILE qty < 6 ALL
USE whileall
? reccount(), code
USE src
* NEXT, RECORD and REST; FOR within NEXT.
GO 3
COPY TO nexted NEXT 3 FOR tally <> 40
USE nexted
? reccount()
SCAN
  ?? tally, " "
ENDSCAN
?
USE src
COPY TO one RECORD 7 FIELDS born
USE one
? reccount(), born, AFIELDS(f)
USE src
COPY TO none RECORD 7 FOR .F.
USE none
? reccount()
USE src
GO 7
COPY TO rest REST
USE rest
? reccount(), code
USE src
COPY TO zero NEXT 0
USE zero
? reccount()
USE src
* The order of the work area orders the copy, SET DELETED its range.
SET ORDER TO code
SET DELETED ON
GO TOP
COPY TO ordered FIELDS code, qty NEXT 4
USE ordered
SCAN
  ?? code, " "
ENDSCAN
?
USE src
SET DELETED OFF

* WITH CDX and FIELDS: the tags whose expressions read only the copied
* fields are built for the copy; those naming a field left out are not,
* even when a variable of that name exists. Words in quotes are no fields.
tally = 5
COPY TO tagged FIELDS code, note WITH CDX
USE tagged
? ATAGINFO(t), t[1, 1], t[2, 1], t[3, 1]
SET ORDER TO mixed
GO TOP
? code, LEFT(note, 5)
SEEK "note3"
? found(), code
USE src
COPY TO tagged2 FIELDS qty, tally WITH CDX
USE tagged2
? ATAGINFO(t), t[1, 1], t[2, 1]
SET ORDER TO qty
? reccount(), TRANSFORM(qty)
USE src

* What is refused: a field the table lacks (12), a field named twice
* (1712), a FOR that is not logical (1127), a RECORD beyond the table, a
* negative NEXT; nothing is left behind, the cursor stays.
GO 4
attempt("COPY TO bad FIELDS code, nothing")
attempt("COPY TO bad FIELDS code, CODE")
attempt("COPY TO bad FOR qty")
attempt("COPY TO bad RECORD 99")
attempt("COPY TO bad NEXT -1")
? recno(), FILE("bad.dbf"), ADIR(a, "*~*")

PROCEDURE attempt(line)
TRY
  &line
CATCH TO e
  ? e.errorno, e.message
ENDTRY
