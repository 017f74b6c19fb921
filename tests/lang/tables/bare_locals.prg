* A LOCAL read by its bare name: a field of the current work area of that
* name hides it, in whatever state the same instruction meets, and the LOCAL
* is back once no table of the current work area has the field. Recursion
* reads each frame's own slot; an index expression's table hides it too.
CREATE TABLE amounts (qty N(4), label C(6))
APPEND BLANK
REPLACE qty WITH 7
REPLACE label WITH "first"
APPEND BLANK
REPLACE qty WITH 9
REPLACE label WITH "second"
USE
? "states:", States()
? "recursion:", Depth(4)
? "program level:", ProgramLevel()
USE amounts
INDEX ON Keyed(label) TAG lbl
? "a parameter a field hides:", Keyed("x")
USE

FUNCTION States
   LOCAL qty, i, seen
   qty = 100
   seen = ""
   FOR i = 1 TO 6
      DO CASE
      CASE i = 2
         USE amounts
      CASE i = 3
         SELECT 2
      CASE i = 4
         SELECT 1
      CASE i = 5
         USE
      CASE i = 6
         USE amounts IN 3
         SELECT 3
         GO BOTTOM
      ENDCASE
      seen = seen + str(qty, 4) + str(m.qty, 4) + ";"
   NEXT
   USE
   SELECT 1
   RETURN seen + str(qty + 1, 4)

FUNCTION Depth(n)
   LOCAL mine
   mine = n * 10
   IF n > 1
      Depth(n - 1)
   ENDIF
   RETURN mine + n

FUNCTION ProgramLevel
   LOCAL label
   label = "local"
   USE amounts
   GO BOTTOM
   result = label + "/" + m.label
   USE
   RETURN result + "/" + label

FUNCTION Keyed(label)
   RETURN label
