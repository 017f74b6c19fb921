# The sum of scan.prg over the table of append.py.
import sqlite3

db = sqlite3.connect("bench.sqlite")
total = db.execute("SELECT SUM(amount) FROM bench WHERE day >= ? AND amount > ?", ("2022-01-01", 500)).fetchone()[0]
print("result:", total)
db.close()
