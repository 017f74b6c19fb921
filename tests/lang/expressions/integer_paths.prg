* The integer short paths of the loop give what the general operations give.
big = 9223372036854775807
one = 1
? big + one, vartype(big + one), big - one + one
n = 0
FOR i = 10 TO 1 STEP -3
   n = n + i
NEXT
? "down:", n, i
FOR i = 1 TO 3
NEXT
? "after:", i
i = big - 1
FOR i = big - 1 TO big
   ?? i
   IF i = big
      EXIT
   ENDIF
NEXT
?
a = 5
b = 7
? a < b, a <= b, a > b, a >= b, a = b, a <> b, a == a
x = 0.25
y = 1.5
? x + y, x + one, one + x
FOR f = 0.5 TO 2 STEP 0.5
   ?? f
NEXT
?
