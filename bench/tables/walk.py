# The walk of walk.prg: every row in upper(name) order.
import sqlite3

db = sqlite3.connect("bench.sqlite")
total = 0
k = 0
for (ident,) in db.execute("SELECT id FROM ibench INDEXED BY ibench_name ORDER BY upper(name)"):
    k += 1
    total += ident * (k % 13)
print("result:", k, total)
db.close()
