* Result sets whose columns all have a bounded size come in blocks of rows:
* rows on both sides of a block's edge, nulls, text beyond the ASCII range
* and text longer than its column (SQLite doesn't hold a varchar to its
* length, PostgreSQL refuses it, so there the cut value goes in) must read as
* they would one row at a time: SQLite's varchar(10) is a field of 40 bytes
* here, PostgreSQL's one of 10 characters. The statement then runs other statements,
* also ones read row by row (a text column is a memo).
lcConnect = GETENV("ZOBASE_SQL_CONNECT")
llServer = !EMPTY(lcConnect)
lcConnect = IIF(llServer, lcConnect, "Driver=SQLite3;Database=blocks.db")
h = sqlstringconnect(lcConnect)
? "create:", sqlexec(h, "create table block_rows (id integer, name varchar(10), amount double precision, day date, note text)")
FOR i = 1 TO 150
  vName = IIF(i % 50 = 0, .NULL., IIF(i % 7 = 0, "Zoë😀" + TRANSFORM(i), "n" + TRANSFORM(i)))
  vAmount = IIF(i % 40 = 0, .NULL., i * 0.25)
  = sqlexec(h, "insert into block_rows values (?i, ?vName, ?vAmount, ?(DATE(2024, 1, 1) + i), ?('note ' + TRANSFORM(i)))")
NEXT
lcLong = REPLICATE("a", 50)
= sqlexec(h, "insert into block_rows values (151, ?IIF(llServer, LEFT(lcLong, 10), lcLong), 1, NULL, NULL)")
lcLong = REPLICATE("ä", 30)
= sqlexec(h, "insert into block_rows values (152, ?IIF(llServer, LEFT(lcLong, 10), lcLong), 2, NULL, NULL)")

? "select:", sqlexec(h, "select id, name, amount, day from block_rows order by id", "r")
? "rows:", RECCOUNT(), "fields:", AFIELDS(aFields)
nIds = 0
nAmount = 0
nNullNames = 0
nNullAmounts = 0
SCAN
  nIds = nIds + id
  nAmount = nAmount + NVL(amount, 0)
  nNullNames = nNullNames + IIF(ISNULL(name), 1, 0)
  nNullAmounts = nNullAmounts + IIF(ISNULL(amount), 1, 0)
ENDSCAN
? "sums:", nIds, nAmount, "nulls:", nNullNames, nNullAmounts
GO 151
? "long:", LEN(ALLTRIM(name)) = IIF(llServer, 10, 40), LEFT(name, 3)
SKIP
? "long:", LEN(ALLTRIM(name)) = IIF(llServer, 10, 20), LEFT(name, 3)
lcRecords = "1 63 64 65 128 129 140 150"
FOR k = 1 TO GETWORDCOUNT(lcRecords)
  GO VAL(GETWORDNUM(lcRecords, k))
  ? id, ALLTRIM(NVL(name, "(null)")), NVL(amount, -1), day
NEXT

* The same statement handle: an empty result, then one read row by row.
? "empty:", sqlexec(h, "select id, name from block_rows where id < 0", "e"), RECCOUNT("e")
? "memo:", sqlexec(h, "select id, note from block_rows where id in (64, 65) order by id", "m")
SCAN
  ? id, note
ENDSCAN
? "again:", sqlexec(h, "select id, day from block_rows where id between 149 and 151 order by id", "a"), RECCOUNT("a")
SCAN
  ? id, day
ENDSCAN
? sqldisconnect(h)
