* 1,000,000 dates through dtoc and 1,000,000 numbers through str; the
* lengths are summed so that every text is made and looked at.
d = {^2000-01-01}
n = 0
FOR i = 1 TO 1000000
   n = n + len(dtoc(d + i % 20000))
NEXT
FOR i = 1 TO 1000000
   n = n + len(str(i * 1.25, 12, 2))
NEXT
? "result:", n
