* SCATTER and GATHER round trips: to and from an array, private variables
* and an object; MEMO takes memo fields along, BLANK gives empty values.
CREATE CURSOR card (name C(6), age N(3), born D, member L, notes M)
APPEND BLANK
REPLACE name WITH "Ann"
REPLACE age WITH 41
REPLACE born WITH {^1983-05-06}
REPLACE member WITH .T.
REPLACE notes WITH "likes tea"
* To an array: memo fields only with MEMO.
SCATTER TO row
? "array:", row[1], row[2], row[3] = {^1983-05-06}, row[4]
TRY
  ? row[5]
CATCH TO e
  ? "four elements:", e.errorno
ENDTRY
SCATTER TO row MEMO
? "with memo:", row[5]
SCATTER TO empty BLANK
? "blank:", "[" + empty[1] + "]", empty[2], EMPTY(empty[3]), empty[4]
APPEND BLANK
GATHER FROM row MEMO
? "gathered:", recno(), name, age, born = {^1983-05-06}, member, notes
* A shorter array fills the first fields only.
DIMENSION short[1]
short[1] = "Bo"
GATHER FROM short
? "short:", name, age
* To private variables and back; a variable hides nothing of the field.
GO 1
SCATTER MEMVAR
? "memvar:", m.name, m.age, m.member
m.age = m.age + 1
m.name = "Anne"
GATHER MEMVAR
? "back:", name, age
SCATTER MEMVAR BLANK
? "blank memvars:", "[" + m.name + "]", m.age
* To an object and back.
SCATTER NAME rec MEMO
? "object:", rec.name, rec.age, rec.notes
rec.age = 50
rec.notes = "now coffee"
GO 2
GATHER NAME rec MEMO
? "from object:", recno(), name, age, notes
rec.notes = "ignored"
GATHER NAME rec
? "without memo keeps:", notes
SCATTER NAME rec2 BLANK
? "blank object:", "[" + rec2.name + "]", rec2.age
* A value the field cannot take leaves the record as it was.
DIMENSION bad[2]
bad[1] = "Zed"
bad[2] = "not a number"
TRY
  GATHER FROM bad
CATCH TO e
  ? "refused:", e.errorno, name
ENDTRY
