* A bare name is a field of the current work area first, then the variable;
* m. always the variable. The same instructions run in every state.
CREATE TABLE people (name C(8), age N(3))
APPEND BLANK
REPLACE name WITH "Ann"
REPLACE age WITH 41
USE
name = "variable"
FOR k = 1 TO 6
   DO CASE
   CASE k = 2
      USE people
   CASE k = 3
      SELECT 2
   CASE k = 4
      SELECT 1
   CASE k = 5
      USE
   CASE k = 6
      USE people IN 3
      SELECT 3
   ENDCASE
   ? k, Area(), name, m.name, Reads()
NEXT
USE

* Inside SCAN the field changes record by record; a variable of the same
* name is back once the table closes.
CREATE CURSOR items (n N(3))
FOR i = 1 TO 3
   APPEND BLANK
   REPLACE n WITH i * 10
NEXT
n = 1000
sum = 0
FOR pass = 1 TO 2
   SCAN
      sum = sum + n
   ENDSCAN
NEXT
? "fields:", sum
USE
? "variable again:", n

FUNCTION Reads
   RETURN name

FUNCTION Area
   RETURN select()
