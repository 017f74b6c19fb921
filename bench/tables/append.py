# Inserts the rows of append.prg into one table in one transaction.
import datetime
import sqlite3

START = datetime.date(2020, 1, 1)
db = sqlite3.connect("bench.sqlite")
db.execute("CREATE TABLE bench (name TEXT, amount REAL, day TEXT, n INTEGER)")
rows = (("customer", (i % 100000) / 100, (START + datetime.timedelta(days=i % 3650)).isoformat(), i)
        for i in range(1, 1000001))
with db:
    db.executemany("INSERT INTO bench VALUES (?, ?, ?, ?)", rows)
print("result:", db.execute("SELECT COUNT(*) FROM bench").fetchone()[0])
db.close()
