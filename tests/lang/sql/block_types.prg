* Every column type that comes in blocks of bound rows reads the same as
* row by row: the same select once without and once with a text column (a
* memo, which sends the whole result row by row), compared field by field
* over rows of values, of edge values and of nulls.
lcConnect = GETENV("ZOBASE_SQL_CONNECT")
llServer = !EMPTY(lcConnect)
lcConnect = IIF(llServer, lcConnect, "Driver=SQLite3;Database=block_types.db")
h = sqlstringconnect(lcConnect)
? "create:", sqlexec(h, "create table block_kinds (id integer, flag boolean, small smallint, big bigint, " + ;
  "price numeric(10,2), ratio double precision, born date, seen timestamp, at_time time, code char(4), " + ;
  "name varchar(12), note text)")
= sqlexec(h, "insert into block_kinds values (1, ?.T., 7, ?(2^40), 1234.56, 1.25, ?DATE(2024, 2, 29), " + ;
  "?DATETIME(2024, 2, 29, 13, 14, 15), '12:34:56', 'AB', ?'Zoë Ångström', 'n')")
= sqlexec(h, "insert into block_kinds values (2, ?.F., -32768, ?(0 - 2^40), -0.05, -1e300, ?DATE(1, 1, 1), " + ;
  "?DATETIME(9999, 12, 31, 23, 59, 59), '00:00:00', '', '', 'n')")
= sqlexec(h, "insert into block_kinds (id) values (3)")
lcColumns = "id, flag, small, big, price, ratio, born, seen, at_time, code, name"
? "blocks:", sqlexec(h, "select " + lcColumns + " from block_kinds order by id", "blk")
? "rows:", sqlexec(h, "select " + lcColumns + ", note from block_kinds order by id", "one")
nFields = AFIELDS(aFields, "blk")
? "fields:", nFields, "records:", RECCOUNT("blk"), RECCOUNT("one")
SELECT blk
SCAN
  GO RECNO("blk") IN one
  lcDiffer = ""
  FOR i = 1 TO nFields
    vBlock = EVALUATE("blk." + aFields[i, 1])
    vRow = EVALUATE("one." + aFields[i, 1])
    IF ISNULL(vBlock) <> ISNULL(vRow) OR (!ISNULL(vBlock) AND !(vBlock == vRow))
      lcDiffer = lcDiffer + " " + aFields[i, 1]
    ENDIF
  NEXT
  ? "row", id, IIF(EMPTY(lcDiffer), "same", "differs in" + lcDiffer), "nulls:", IIF(ISNULL(flag), "yes", "no")
ENDSCAN
? sqldisconnect(h)
