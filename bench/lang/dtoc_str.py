# 1,000,000 dates through strftime and 1,000,000 numbers through format, as
# dtoc_str.prg does with dtoc and str.
import datetime

d = datetime.date(2000, 1, 1)
n = 0
for i in range(1, 1000001):
    n = n + len((d + datetime.timedelta(days=i % 20000)).strftime("%m/%d/%y"))
for i in range(1, 1000001):
    n = n + len(format(i * 1.25, "12.2f"))
print("result:", n)
