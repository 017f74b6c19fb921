* The same macro text run again and again sees what holds when it runs:
* changed variables, a field that now hides a name, SET EXACT, a variable an
* earlier macro made, a function of the program, and its errors every time.
cText = "nBase + 1"
nBase = 10
FOR i = 1 TO 3
   ?? &cText
   nBase = nBase * 2
NEXT
?
CREATE CURSOR hides (nBase N(4))
APPEND BLANK
REPLACE nBase WITH 500
? "field:", &cText
USE
? "variable again:", &cText
cCompare = [cLeft = "ab"]
cLeft = "abc"
FOR i = 1 TO 2
   IF i = 2
      SET EXACT ON
   ENDIF
   ? "exact", set("EXACT"), &cCompare
NEXT
SET EXACT OFF
cMake = "nMade" + " = i * 7"
FOR i = 1 TO 2
   &cMake
   ? "made:", nMade
NEXT
? "made in a callee, gone after:", MakeThere(cMake), type("nMade2")
cCall = "Twice(nBase)"
? "call:", &cCall, Other(cCall)
cBad = "nMissing + 1"
FOR i = 1 TO 2
   TRY
      ? &cBad
   CATCH TO oError
      ? "error", oError.ErrorNo, oError.Message
   ENDTRY
NEXT
nMissing = 1
? "now there:", &cBad

FUNCTION Twice(n)
   RETURN n * 2

FUNCTION Other(cText)
   LOCAL nBase
   nBase = 3
   RETURN &cText

FUNCTION MakeThere(cText)
   PRIVATE nMade
   cText = strtran(cText, "nMade", "nMade2")
   &cText
   RETURN nMade2
