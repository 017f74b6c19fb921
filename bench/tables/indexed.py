# The rows of indexed.prg into a table with two indexes, in one transaction.
import sqlite3

db = sqlite3.connect("bench.sqlite")
db.execute("CREATE TABLE ibench (id INTEGER, name TEXT, amount REAL)")
db.execute("CREATE INDEX ibench_id ON ibench (id)")
db.execute("CREATE INDEX ibench_name ON ibench (upper(name))")
rows = ((i, "cust" + str((i * 7919) % 1000003).rjust(7), (i % 100000) / 100) for i in range(1, 1000001))
with db:
    db.executemany("INSERT INTO ibench VALUES (?, ?, ?)", rows)
print("result:", db.execute("SELECT COUNT(*) FROM ibench").fetchone()[0])
db.close()
