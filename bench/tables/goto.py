# The reads of goto.prg: one row by its number at a time.
import sqlite3

db = sqlite3.connect("bench.sqlite")
cursor = db.cursor()
total = 0
r = 12345
for _ in range(1000000):
    r = (r * 1103515245 + 12345) % 2147483648
    total += cursor.execute("SELECT n FROM bench WHERE rowid = ?", (r % 1000000 + 1,)).fetchone()[0]
print("result:", total)
db.close()
