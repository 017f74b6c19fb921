* Long text and binary values cross in pieces: characters that take two
* UTF-16 units, and bytes of every value, come back whole.
lcConnect = GETENV("ZOBASE_SQL_CONNECT")
llServer = !EMPTY(lcConnect)
lcConnect = IIF(llServer, lcConnect, "Driver=SQLite3;Database=long.db")
h = sqlstringconnect(lcConnect)
= sqlexec(h, "create table texts (id integer, body text, data " + IIF(llServer, "bytea", "blob") + ")")
lcBody = REPLICATE("ä😀x", 3001)
lcBytes = ""
FOR i = 0 TO 255
  lcBytes = lcBytes + CHR(i)
NEXT
lcData = CREATEBINARY(REPLICATE(lcBytes, 40))
? "insert:", sqlexec(h, "insert into texts values (1, ?lcBody, ?lcData)")
? "empty:", sqlexec(h, "insert into texts values (2, '', ?CREATEBINARY(''))")
? "select:", sqlexec(h, "select body, data from texts order by id")
? "text:", LEN(body), body == lcBody, RIGHT(body, 3)
? "bytes:", LEN(data), data == lcData
SKIP
? "empty:", LEN(body), LEN(data), ISNULL(body)
? sqldisconnect(h)
