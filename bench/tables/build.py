# The rows of build.prg inserted with no index, then both indexes made.
import sqlite3

db = sqlite3.connect("bench.sqlite")
db.execute("CREATE TABLE bbench (id INTEGER, name TEXT, amount REAL)")
rows = ((i, "cust" + str((i * 7919) % 1000003).rjust(7), (i % 100000) / 100) for i in range(1, 1000001))
with db:
    db.executemany("INSERT INTO bbench VALUES (?, ?, ?)", rows)
    db.execute("CREATE INDEX bbench_id ON bbench (id)")
    db.execute("CREATE INDEX bbench_name ON bbench (upper(name))")
print("result:", db.execute("SELECT COUNT(*) FROM bbench").fetchone()[0])
db.close()
