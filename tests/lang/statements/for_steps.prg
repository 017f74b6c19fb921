* The end of a FOR round: steps of every number type, a variable the body
* changes, a variable passed by reference, the loop inside and outside a
* function, nested loops.
s = ""
FOR x = 0 TO 1 STEP 0.25
   s = s + str(x, 5, 2)
NEXT
? "fractions:", s, x
s = ""
FOR x = 3 TO -3 STEP -2.5
   s = s + str(x, 5, 1)
NEXT
? "down by fractions:", s, x
s = ""
FOR x = $1.5 TO $4 STEP $1.25
   s = s + transform(x)
NEXT
? "money:", s
n = 0
FOR i = 1 TO 10
   i = i + 2
   n = n + 1
NEXT
? "body moves the variable:", n, i
n = 0
Count(@n)
? "by reference:", n
? "inside a function:", Inside()
FOR i = 1 TO 3
   FOR j = i TO 1 STEP -1
      ?? str(i * 10 + j, 3)
   NEXT
NEXT
?

PROCEDURE Count(v)
   FOR v = 1 TO 4
   NEXT
ENDPROC

FUNCTION Inside
   LOCAL i, t
   t = 0
   FOR i = 1 TO 100 STEP 7
      t = t + i
   NEXT
   RETURN str(t) + str(i)
