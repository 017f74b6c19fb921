* A FOR loop's test reads its variable as a bare name: once a table with a
* field of that name is current, the test reads the field while the step
* still goes to the variable. Program level, inside a function with a LOCAL,
* and after the table closes again.
CREATE TABLE limits (k N(3), j N(3))
APPEND BLANK
REPLACE k WITH 9
REPLACE j WITH 1
USE
rounds = 0
FOR k = 1 TO 5
   rounds = rounds + 1
   IF k = 2
      USE limits
   ENDIF
NEXT
? "field ends the loop:", rounds, k, m.k
USE
? "in a function:", LocalLoop()
FOR k = 1 TO 3
NEXT
? "variable again:", k
USE limits
FOR j = 1 TO 3
   ? "field j stays", j, "variable", m.j
   IF m.j = 2
      USE
   ENDIF
NEXT
? "after:", j

FUNCTION LocalLoop
   LOCAL k, n
   n = 0
   FOR k = 1 TO 5
      n = n + 1
      IF n = 3
         USE limits
      ENDIF
   NEXT
   USE
   RETURN str(n, 2) + str(m.k, 3)
