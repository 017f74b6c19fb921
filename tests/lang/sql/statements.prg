* Statements, handles and their errors: the same answers from SQLite and
* PostgreSQL (tests/shell/sql_postgres.sh runs this program there too).
lcConnect = GETENV("ZOBASE_SQL_CONNECT")
lcConnect = IIF(EMPTY(lcConnect), "Driver=SQLite3;Database=statements.db", lcConnect)
h = sqlstringconnect(lcConnect)
? "create:", sqlexec(h, "create table people (id integer, name varchar(30))")
* A ? inside a quoted literal is text, not a parameter.
nId = 1
? "insert:", sqlexec(h, "insert into people values (?nId, 'who?')"), ;
  sqlexec(h, "insert into people values (2, 'x?y')"), ;
  sqlexec(h, "insert into people values (3, 'it''s ?nId')")
* The same in a quoted name.
? "quoted name:", sqlexec(h, 'select name as "what?", id from people where id = ?nId'), AFIELDS(aQ), id
? "select:", sqlexec(h, "select name from people order by id"), ALIAS()
SCAN
  ? "  ", ALLTRIM(name)
ENDSCAN

* An UPDATE gives 1 and no cursor; the info array tells the row count.
USE
LOCAL aInfo[1]
? "update:", sqlexec(h, "update people set name = 'many' where id >= 2", "nothing", aInfo), USED("nothing")
? "info:", ALEN(aInfo, 1), ALEN(aInfo, 2), "[" + aInfo[1, 1] + "]", aInfo[1, 2]
? "named:", sqlexec(h, "select id, name from people where id = 3", "c", aInfo), ALIAS(), ALLTRIM(name)
? "info:", aInfo[1, 1], aInfo[1, 2]
* The same alias again replaces that cursor; another stays beside it.
? "again:", sqlexec(h, "select id from people", "c"), RECCOUNT("c")
? "beside:", sqlexec(h, "select id from people where id = 1"), USED("c"), USED("sqlresult")

* A wrong statement answers -1 and leaves the driver's words in aerror().
? "wrong:", sqlexec(h, "select missing from nowhere_at_all")
n = AERROR(aErr)
? "aerror:", n >= 1, aErr[n, 1], "nowhere_at_all" $ LOWER(aErr[n, 2]), LEFT(aErr[n, 2], 20), ;
  "nowhere_at_all" $ LOWER(aErr[n, 3]), LEN(aErr[n, 4]), VARTYPE(aErr[n, 5]), aErr[n, 6] = h
* ... and the handle works on.
* count(*) is INTEGER in SQLite and BIGINT (C(20)) in PostgreSQL.
? "after:", sqlexec(h, "select count(*) as n from people"), ALLTRIM(TRANSFORM(n))

* Statements prepared once run with the parameters' values of each call.
nWanted = 1
? "prepare:", sqlprepare(h, "select name from people where id = ?nWanted", "p")
? "run:", sqlexec(h), ALIAS(), ALLTRIM(name)
nWanted = 3
? "run:", sqlexec(h), ALIAS(), ALLTRIM(name)
* Text given to sqlexec replaces the prepared statement.
? "text:", sqlexec(h, "select 5 as five"), ALIAS(), five
TRY
  = sqlexec(h)
CATCH TO e
  ? "unprepared:", e.ErrorNo, e.Message
ENDTRY

* Two statements on one connection: one ODBC connection, two statements.
h2 = sqlconnect(h)
? "second:", h2 > h, sqlgetprop(h, "ODBCHDBC") = sqlgetprop(h2, "ODBCHDBC"), ;
  sqlgetprop(h, "ODBCHSTMT") = sqlgetprop(h2, "ODBCHSTMT")
DIMENSION aHandles[1]
? "handles:", asqlhandles(aHandles), aHandles[1] = h, aHandles[2] = h2
? "on h's connection:", asqlhandles(aHandles, h2)
? "properties:", sqlgetprop(h2, "Shared"), sqlgetprop(h2, "BATCHMODE")
? "batchmode off:", sqlsetprop(h2, "BatchMode", .F.), sqlgetprop(h, "BATCHMODE")
= sqlsetprop(h2, "BatchMode", .T.)
TRY
  = sqlsetprop(h, "SHARED", .T.)
CATCH TO e
  ? "shared:", e.ErrorNo, e.Message
ENDTRY
TRY
  = sqlgetprop(h, "Color")
CATCH TO e
  ? "unknown:", e.ErrorNo, e.Message
ENDTRY
? "disconnect:", sqldisconnect(h)
? "h2 works:", sqlexec(h2, "select name from people where id = 1"), ALLTRIM(name)
TRY
  = sqlexec(h, "select 1")
CATCH TO e
  ? "closed:", e.ErrorNo, e.Message
ENDTRY
TRY
  = sqlconnect(h)
CATCH TO e
  ? "closed source:", e.ErrorNo
ENDTRY
TRY
  = sqlconnect(DATE())
CATCH TO e
  ? "bad source:", e.ErrorNo
ENDTRY
* A new handle never takes an old number.
h3 = sqlconnect(h2)
? "new number:", h3 > h2
? sqldisconnect(h3), sqldisconnect(h2), asqlhandles(aHandles)
* A data source that is not there: -1 and the driver manager's words.
? "no source:", sqlconnect("zobase_no_such_source")
n = AERROR(aErr)
? "state:", aErr[n, 1], aErr[n, 4], aErr[n, 6]
