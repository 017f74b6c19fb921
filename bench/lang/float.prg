* 5,000,000 rounds of floating-point arithmetic.
x = 1
y = 0
FOR i = 1 TO 5000000
   x = x * 1.0000001 + 0.5
   y = y + x / i
NEXT
? "result:", round(y, 0)
