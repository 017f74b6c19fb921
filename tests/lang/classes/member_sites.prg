* The same member instruction run on objects of different shapes: each run
* must see the member the object has now, whatever an earlier run found.
LOCAL aObjects[4], o, i, k

* One site, objects of classes that hold the property in different places
* (own storage, a parent's link, an access method of a subclass).
aObjects[1] = CREATEOBJECT("Plain")
aObjects[2] = CREATEOBJECT("Derived")
aObjects[3] = CREATEOBJECT("WithAccess")
aObjects[4] = CREATEOBJECT("Plain")
aObjects[4].nValue = 40
FOR k = 1 TO 2
   FOR i = 1 TO 4
      ?? ShowValue(aObjects[i]), ""
   NEXT
   ?
NEXT

* A property added, then removed, between two runs of the same read and call.
o = CREATEOBJECT("Plain")
FOR k = 1 TO 4
   DO CASE
   CASE k = 2
      o.AddProperty("cExtra", "added")
   CASE k = 3
      o.RemoveProperty("cExtra")
   CASE k = 4
      o.AddProperty("cExtra", "again")
   ENDCASE
   TRY
      ? k, o.cExtra
   CATCH TO oError
      ? k, "error", oError.ErrorNo
   ENDTRY
NEXT

* An added property hides nothing of the class but is found beside it.
o = CREATEOBJECT("Derived")
FOR k = 1 TO 2
   ? ShowValue(o), o.Twice()
   o.AddProperty("nOther", 5)
NEXT

* A method found in the parent at one site, then overridden in a subclass.
aObjects[1] = CREATEOBJECT("Plain")
aObjects[2] = CREATEOBJECT("Overrides")
aObjects[3] = CREATEOBJECT("Plain")
FOR i = 1 TO 3
   ?? aObjects[i].Twice(), ""
NEXT
?

* THIS.x written from the parent's method: a subclass's assign method runs,
* and a plain object after it is written directly again.
aObjects[1] = CREATEOBJECT("Plain")
aObjects[2] = CREATEOBJECT("Guarded")
aObjects[3] = CREATEOBJECT("Plain")
FOR i = 1 TO 3
   aObjects[i].Bump(7)
   ?? aObjects[i].nValue, ""
NEXT
?

* PROTECTED and HIDDEN members at a site reached from inside and outside.
LOCAL oKeeper, oOther
oKeeper = CREATEOBJECT("Keeper")
oOther = CREATEOBJECT("Keeper")
oOther.SetSecrets(100)
FOR k = 1 TO 2
   ? "own:", oKeeper.PeekProtected(oKeeper), oKeeper.PeekHidden(oKeeper)
   TRY
      ? "other protected:", oKeeper.PeekProtected(oOther)
   CATCH TO oError
      ? "other protected: error", oError.ErrorNo
   ENDTRY
   TRY
      ? "other hidden:", oKeeper.PeekHidden(oOther)
   CATCH TO oError
      ? "other hidden: error", oError.ErrorNo
   ENDTRY
   TRY
      ? "outside:", ReadProtected(oKeeper)
   CATCH TO oError
      ? "outside: error", oError.ErrorNo
   ENDTRY
   TRY
      ? "through a function from a method:", oKeeper.ViaFunction()
   CATCH TO oError
      ? "through a function from a method: error", oError.ErrorNo
   ENDTRY
   ? "from a subclass:", CREATEOBJECT("SubKeeper").PeekFromSub()
   TRY
      ? "hidden from a subclass:", CREATEOBJECT("SubKeeper").PeekHiddenFromSub()
   CATCH TO oError
      ? "hidden from a subclass: error", oError.ErrorNo
   ENDTRY
NEXT

FUNCTION ShowValue(toObject)
   RETURN toObject.nValue

FUNCTION ReadProtected(toObject)
   RETURN toObject.nProt

DEFINE CLASS Plain AS Custom
   nValue = 1
   PROCEDURE Twice
      RETURN This.nValue * 2
   ENDPROC
   PROCEDURE Bump(tnBy)
      This.nValue = This.nValue + tnBy
      This.nValue = This.nValue + 1
   ENDPROC
ENDDEFINE

DEFINE CLASS Derived AS Plain
   nOwn = 3
ENDDEFINE

DEFINE CLASS WithAccess AS Plain
   PROCEDURE nValue_Access
      RETURN 1000
   ENDPROC
ENDDEFINE

DEFINE CLASS Overrides AS Plain
   PROCEDURE Twice
      RETURN "overridden"
   ENDPROC
ENDDEFINE

DEFINE CLASS Guarded AS Plain
   nValue = 1
   PROCEDURE nValue_Assign(tnValue)
      This.nValue = tnValue * 10
   ENDPROC
ENDDEFINE

DEFINE CLASS Keeper AS Custom
   PROTECTED nProt
   nProt = 1
   HIDDEN nHid
   nHid = 2
   PROCEDURE SetSecrets(tnBase)
      This.nProt = tnBase + 1
      This.nHid = tnBase + 2
   ENDPROC
   PROCEDURE PeekProtected(toObject)
      RETURN toObject.nProt
   ENDPROC
   PROCEDURE ViaFunction
      RETURN ReadProtected(This)
   ENDPROC
   PROCEDURE PeekHidden(toObject)
      RETURN toObject.nHid
   ENDPROC
ENDDEFINE

DEFINE CLASS SubKeeper AS Keeper
   PROCEDURE PeekFromSub
      RETURN This.nProt
   ENDPROC
   PROCEDURE PeekHiddenFromSub
      RETURN This.nHid
   ENDPROC
ENDDEFINE
