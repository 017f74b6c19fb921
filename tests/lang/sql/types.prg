* Values of every type go out as ?parameters and come back as cursor fields
* mapped from the SQL types. The default database is SQLite through its ODBC
* driver; tests/shell/sql_postgres.sh runs this program against PostgreSQL.
* The drivers describe some types differently, which types.pg.out shows:
* SQLite gives NUMERIC as DOUBLE (B), CHAR as VARCHAR (V) and BLOB as
* BINARY (W); PostgreSQL gives NUMERIC as NUMERIC (Y or B by its precision),
* CHAR as CHAR (C) and BYTEA as LONGVARBINARY (W).
lcConnect = GETENV("ZOBASE_SQL_CONNECT")
llServer = !EMPTY(lcConnect)
lcConnect = IIF(llServer, lcConnect, "Driver=SQLite3;Database=types.db")
lcBlob = IIF(llServer, "bytea", "blob")
lcStamp = IIF(llServer, "timestamp(3)", "timestamp")
h = sqlstringconnect(lcConnect)
? "connected:", h > 0
? "create:", sqlexec(h, "create table kinds (id integer not null, flag boolean, small smallint, big bigint, " + ;
  "price numeric(10,2), wide numeric(20,6), ratio double precision, born date, seen " + lcStamp + ", " + ;
  "at_time time, name varchar(40), code char(4), v254 varchar(254), v300 varchar(300), note text, raw " + lcBlob + ")")

* One row per value type; the names are host expressions of every form.
nId = 1
lFlag = .T.
oRow = CREATEOBJECT("Custom")
ADDPROPERTY(oRow, "cName", "Zoë Ångström")
DIMENSION aCodes[2]
aCodes[2] = "AB"
yPrice = $1234.56
lcInsert = "insert into kinds (id, flag, small, big, price, wide, ratio, born, seen, at_time, name, code, v254, v300, note, raw) " + ;
  "values (?nId, ?lFlag, ?(nId * 7), ?(2^40), ?yPrice, ?123456.789012, ?1.25, ?DATE(2024, 2, 29), " + ;
  "?DATETIME(2024, 2, 29, 13, 14, 15), '12:34:56', ?oRow.cName, ?aCodes[2], ?REPLICATE('v', 254), " + ;
  "?REPLICATE('w', 300), ?m.lcNote, ?CREATEBINARY('a' + CHR(0) + 'b'))"
lcNote = "note of row 1"
? "insert 1:", sqlexec(h, lcInsert)
nId = 2
lFlag = .F.
yPrice = -$0.05
oRow.cName = "second"
aCodes[2] = "C"
lcNote = REPLICATE("0123456789", 3000)
? "insert 2:", sqlexec(h, lcInsert)
* Nulls of any column, from a null value.
? "insert nulls:", sqlexec(h, "insert into kinds values (3, ?.NULL., ?.NULL., ?.NULL., ?.NULL., ?.NULL., ?.NULL., ?.NULL., " + ;
  "?.NULL., ?.NULL., ?.NULL., ?.NULL., ?.NULL., ?.NULL., ?.NULL., ?.NULL.)")

? "select:", sqlexec(h, "select * from kinds order by id")
? "alias:", ALIAS(), RECCOUNT()
n = AFIELDS(aF)
FOR k = 1 TO n
  ? aF[k, 1], aF[k, 2], aF[k, 3], aF[k, 4], aF[k, 5]
NEXT
SCAN
  ? "row", id, flag, small, big, price, wide, ratio, born, seen, at_time
  ? "   ", name, "[" + code + "]", LEN(v254), LEN(v300), LEN(note), LEFT(note, 12), LEN(raw), raw == CREATEBINARY('a' + CHR(0) + 'b')
ENDSCAN
? "types:", VARTYPE(price), VARTYPE(big), VARTYPE(born), VARTYPE(seen), VARTYPE(flag)
? sqldisconnect(h)
