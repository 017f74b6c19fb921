# 1,000,000 field reads: 10,000 rows of an in-memory sqlite3 table, read 100 times.
import sqlite3
db = sqlite3.connect(":memory:")
db.execute("create table items (nval integer, kind text)")
db.executemany("insert into items values (?, '')", ((i % 97,) for i in range(1, 10001)))
n = 0
for _ in range(100):
    for (nval,) in db.execute("select nval from items"):
        n += nval
print("result:", n)
