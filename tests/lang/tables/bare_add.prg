* `x = x + y` with y a bare name: either side may be a field of the current
* work area, at program level and for LOCALs; text appends, and an integer
* sum past 64 bits becomes a number; a PRIVATE of a callee and a variable
* that macro text makes are read as the names stand when the line runs.
CREATE TABLE sides (x N(5), y N(5))
APPEND BLANK
REPLACE x WITH 1000
REPLACE y WITH 20000
USE
x = 1
y = 2
FOR k = 1 TO 5
   DO CASE
   CASE k = 2
      USE sides
   CASE k = 3
      SELECT 2
   CASE k = 4
      SELECT 1
   CASE k = 5
      USE
   ENDCASE
   x = x + y
   ?? str(m.x, 7)
NEXT
?
? "locals:", Locals()
c = "ab"
d = "cd"
c = c + d
c = c + c
? "text:", c
big = 9223372036854775000
one = 1000
big = big + one
? "past 64 bits:", big > 0, vartype(big)
n = 10
step = 5
? "private in a callee:", Callee(), n, step
* The macro makes a variable that the next line adds.
cmd = "extra = 7"
&cmd
n = n + extra
? "macro made:", n
? "same loop at program level:", Loop(), "in a function:", LoopIn()
total = 0
FOR i = 1 TO 4
   total = total + i
NEXT
? "program level loop:", total

FUNCTION Locals
   LOCAL x, y
   x = 1
   y = 2
   x = x + y
   USE sides
   x = x + y
   USE
   x = x + y
   RETURN str(x, 7)

FUNCTION Callee
   PRIVATE step
   step = 100
   n = n + step
   RETURN n

FUNCTION Loop
   total = 0
   FOR i = 1 TO 4
      total = total + i
   NEXT
   RETURN total

FUNCTION LoopIn
   LOCAL total, i
   total = 0
   FOR i = 1 TO 4
      total = total + i
   NEXT
   RETURN total
