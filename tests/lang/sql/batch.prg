* A batch of statements in one sqlexec. SQLite's ODBC driver runs one
* statement per call and refuses a batch (-1 with its message), as
* batch.out shows; PostgreSQL runs it (batch.pg.out): with BATCHMODE on one
* call makes every cursor, with it off sqlmoreresults reads them one by one.
lcConnect = GETENV("ZOBASE_SQL_CONNECT")
lcConnect = IIF(EMPTY(lcConnect), "Driver=SQLite3;Database=batch.db", lcConnect)
h = sqlstringconnect(lcConnect)
= sqlexec(h, "create table letters (id integer, letter varchar(1))")
= sqlexec(h, "insert into letters values (1, 'a')")
= sqlexec(h, "insert into letters values (2, 'b')")
lcBatch = "select letter from letters order by id; update letters set letter = 'c' where id = 2; select id from letters"
LOCAL aInfo[1]
nResult = sqlexec(h, lcBatch, "", aInfo)
? "batch:", nResult
IF nResult < 0
  = AERROR(aErr)
  ? "refused:", aErr[1, 3]
ELSE
  ? "cursors:", USED("sqlresult"), USED("sqlresult2"), RECCOUNT("sqlresult"), RECCOUNT("sqlresult2")
  ? "info rows:", ALEN(aInfo, 1)
  FOR i = 1 TO ALEN(aInfo, 1)
    ? "  [" + aInfo[i, 1] + "]", aInfo[i, 2]
  NEXT
  ? "named:", sqlexec(h, lcBatch, "c"), USED("c"), USED("c2")
  = sqlsetprop(h, "BatchMode", .F.)
  USE IN c
  USE IN c2
  ? "batchmode off:", sqlexec(h, lcBatch, "c"), USED("c"), USED("c2"), c.letter
  ? "more:", sqlmoreresults(h), USED("c2"), RECCOUNT("c2")
  ? "no more:", sqlmoreresults(h)
  ? "named more:", sqlexec(h, lcBatch), sqlmoreresults(h, "last"), USED("last"), RECCOUNT("last")
ENDIF
? sqldisconnect(h)
