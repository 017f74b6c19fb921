* A quotient keeps the type and decimals the general rule gives it, whether
* it is plainly fractional, a whole number, or near one.
x = 7.5
? x / 2, vartype(x / 2)
? 1.5 / 0.5, 6.0 / 3, 0.3 / 0.1
y = 1.0000001
z = y / 3
? round(z, 10)
big = 10 ^ 20
? -7.5 / 2, 7.5 / -2, big / 3, big / 4
a = 10.0
n = 4
? a / n, a / 5, a / 0.25
FOR i = 1 TO 4
   ?? str(10.5 / i, 10, 4)
NEXT
?
q = 2.5
q = q / 0
? "by zero:", q > 10 ^ 300, -q < -(10 ^ 300)
* Remainders of whole numbers take the divisor's sign; a divisor of zero and
* numbers past 32 bits go the general way.
FOR k = -7 TO 7 STEP 7
   ?? str(k % 3, 3), str(k % -3, 3), str(k % 7, 3)
NEXT
?
big = 2147483648 * 3 + 5
? big % 7, (0 - big) % 7, 10 % 4, vartype(10 % 4)
zero = 0
m0 = 7 % zero
? "remainder by zero:", vartype(m0)
