* A default is computed once, when the class is compiled, on a stack of its
* own: it can't see the program's variables, and it can't be an object,
* which every instance would then share. Both are reported, and nothing runs.
gnLimit = 10
? "not run"

DEFINE CLASS Limits AS Custom
   nMax = gnLimit
   oHelper = CREATEOBJECT("Custom")
   nFine = 1
ENDDEFINE
