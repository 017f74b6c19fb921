* THIS.name = THIS.name + value in a method is one instruction: a stored
* number adds in place; every other case reads, adds and writes as the
* three steps would, at the same place in the code.
LOCAL o, i, g, s, h, r
o = CREATEOBJECT("Counter")
FOR i = 1 TO 5
   o.Add(i)
ENDFOR
? "integers:", o.nTotal
* Numbers with decimals, text, null, a date; a logical is refused where
* the sum is, with the place of the sum.
o.nTotal = 1.25
o.Add(2.5)
? "decimals:", o.nTotal
o.nTotal = "ab"
o.Add("cd")
? "text:", o.nTotal
o.nTotal = .NULL.
o.Add(1)
? "null:", ISNULL(o.nTotal)
o.nTotal = DATE(2024, 1, 31)
o.Add(1)
? "date:", DTOS(o.nTotal)
TRY
   o.Add(.T.)
CATCH TO e
   ? "logical added:", e.ErrorNo
ENDTRY
* A constant on the right; a field named as the parameter hides it.
o.nTotal = 0
o.AddOne()
CREATE CURSOR hider (tnValue N(5))
APPEND BLANK
REPLACE tnValue WITH 100
o.Add(3)
USE
? "constant and field:", o.nTotal
* The same instruction meets an access method, an assign method a
* subclass added, and a property added and then removed at run time.
g = CREATEOBJECT("Guarded")
g.nTotal = 0
g.Add(5)
g.Add(5)
? "assign method:", g.nTotal, g.nWrites
s = CREATEOBJECT("Shown")
s.nTotal = 0
s.Add(5)
? "access method:", s.nTotal
r = CREATEOBJECT("Counter")
r.AddProperty("nExtra", 10)
FOR i = 1 TO 3
   IF i = 3
      = REMOVEPROPERTY(r, "nExtra")
   ENDIF
   TRY
      r.AddExtra(1)
      ? "added property", i, r.nExtra
   CATCH TO e
      ? "added property", i, e.ErrorNo
   ENDTRY
ENDFOR
* HIDDEN in the parent: a subclass's method may not reach it, the parent's may.
h = CREATEOBJECT("Heir")
? "hidden, parent's method:", h.Bump(2)
TRY
   h.Reach(2)
CATCH TO e
   ? "hidden, subclass's method:", e.ErrorNo
ENDTRY
* Uncaught, the refused sum is reported at its operator.
o.nTotal = 1
o.Add(.T.)

DEFINE CLASS Counter AS Custom
   nTotal = 0
   PROCEDURE Add(tnValue)
      This.nTotal = This.nTotal + tnValue
   ENDPROC
   PROCEDURE AddOne
      This.nTotal = This.nTotal + 1
   ENDPROC
   PROCEDURE AddExtra(tnValue)
      This.nExtra = This.nExtra + tnValue
   ENDPROC
ENDDEFINE

DEFINE CLASS Guarded AS Counter
   nWrites = 0
   PROCEDURE nTotal_assign(tvValue)
      This.nWrites = This.nWrites + 1
      This.nTotal = tvValue * 10
   ENDPROC
ENDDEFINE

DEFINE CLASS Shown AS Counter
   FUNCTION nTotal_access
      RETURN This.nTotal + 1000
   ENDFUNC
ENDDEFINE

DEFINE CLASS Secretive AS Custom
   HIDDEN nCount
   nCount = 0
   FUNCTION Bump(tnValue)
      This.nCount = This.nCount + tnValue
      RETURN This.nCount
   ENDFUNC
ENDDEFINE

DEFINE CLASS Heir AS Secretive
   PROCEDURE Reach(tnValue)
      This.nCount = This.nCount + tnValue
   ENDPROC
ENDDEFINE
