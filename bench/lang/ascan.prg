* 1,000,000 ascan look-ups in a 1,000-element array.
DIMENSION a[1000]
FOR i = 1 TO 1000
   a[i] = i * 3
NEXT
n = 0
FOR i = 1 TO 1000000
   n = n + ascan(a, (i % 1000 + 1) * 3)
NEXT
? "result:", n
