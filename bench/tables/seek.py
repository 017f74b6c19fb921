# The lookups of seek.prg through the index on id.
import sqlite3

db = sqlite3.connect("bench.sqlite")
cursor = db.cursor()
total = 0
r = 12345
for _ in range(1000000):
    r = (r * 1103515245 + 12345) % 2147483648
    total += cursor.execute("SELECT amount FROM ibench WHERE id = ?", (r % 1000000 + 1,)).fetchone()[0]
print("result:", round(total, 2))
db.close()
