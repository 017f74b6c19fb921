* Method calls run in place: THIS, the member context (what PROTECTED and
* HIDDEN allow) and the argument window come back after a return and after
* an error that leaves the method; built-in classes go the general way.
LOCAL oA, oB, oList
oA = CREATEOBJECT("Outer")
oB = CREATEOBJECT("Inner")
? oA.Run(oB)
? "counts:", oB.Counted(1), oB.Counted(1, 2)
TRY
   = oB.Counted(1, 2, 3)
CATCH TO e
   ? "too many:", e.errorno
ENDTRY
TRY
   = oB.Secret()
CATCH TO e
   ? "protected from outside:", e.errorno
ENDTRY
? "inherited:", oB.FromBase(4)
oList = CREATEOBJECT("Collection")
oList.Add("x", "key")
? "built-in:", oList.Count, oList.Item("key")
? "destroy on return:", oB.MakesTemporary()
? "after destroy:", oB.Counted()

DEFINE CLASS Outer AS Custom
   PROTECTED nMine
   nMine = 7
   FUNCTION Run(oOther)
      LOCAL cOut
      TRY
         cOut = oOther.Fails(1)
      CATCH TO e
         cOut = "caught " + TRANSFORM(e.errorno)
      ENDTRY
      * Our own PROTECTED members again: the context is ours.
      RETURN cOut + ", mine " + TRANSFORM(This.Mine()) + ", " + oOther.Twice(This.nMine)
   PROTECTED FUNCTION Mine
      RETURN This.nMine
ENDDEFINE

DEFINE CLASS Base AS Custom
   HIDDEN nBase
   nBase = 100
   FUNCTION FromBase(n)
      RETURN This.nBase + n
ENDDEFINE

DEFINE CLASS Inner AS Base
   cName = "inner"
   FUNCTION Fails(n)
      RETURN This.Secret() + n + "text"
   FUNCTION Twice(n)
      RETURN This.cName + " " + TRANSFORM(n * 2)
   FUNCTION Counted(a, b)
      RETURN STR(PCOUNT(), 1) + STR(PARAMETERS(), 1)
   PROTECTED FUNCTION Secret
      RETURN 1
   FUNCTION MakesTemporary
      LOCAL oTemp
      oTemp = CREATEOBJECT("Noisy")
      RETURN This.cName
ENDDEFINE

DEFINE CLASS Noisy AS Custom
   PROCEDURE Destroy
      ?? "(destroyed) "
   ENDPROC
ENDDEFINE
