* `x = x + y` reads x as a bare name: a field of that name gives the left
* side and the variable takes the sum, at program level, for a LOCAL, and in
* a loop that opens and closes the table between rounds.
x = 100
CREATE CURSOR t (x N(3), s C(4))
APPEND BLANK
REPLACE x WITH 5
REPLACE s WITH "fld"
x = x + 1
? "field plus one:", x, m.x
s = "var"
s = s + "!"
? "text:", s, m.s
? "local:", LocalAdd()
USE
x = x + 1
? "variable again:", x
total = 0
FOR k = 1 TO 4
   IF k = 3
      CREATE CURSOR u (total N(5))
      APPEND BLANK
      REPLACE total WITH 1000
   ENDIF
   total = total + k
   ? k, m.total
NEXT
USE
fresh = 1
CREATE CURSOR w (made N(2))
APPEND BLANK
REPLACE made WITH 40
made = made + 2
? "made from a field:", m.made

FUNCTION LocalAdd
   LOCAL x
   x = 1000
   x = x + 1
   RETURN str(x, 5) + str(m.x, 5)
