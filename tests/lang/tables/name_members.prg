* `name.member` read in one step: the name is an open work area's alias
* before it is a variable, and whatever the variable holds now counts.
LOCAL o, k, oSaved
o = CREATEOBJECT("Holder")
FOR k = 1 TO 6
   DO CASE
   CASE k = 2
      * An alias of the same name hides the variable from now on.
      CREATE TABLE o (nValue N(5))
      APPEND BLANK
      REPLACE nValue WITH 77
   CASE k = 3
      USE
   CASE k = 4
      oSaved = o
      o = CREATEOBJECT("Computed")
   CASE k = 5
      o = 12
   CASE k = 6
      o = oSaved
      o.AddProperty("nLater", 5)
   ENDCASE
   TRY
      ? k, o.nValue
   CATCH TO oError
      ? k, "error", oError.ErrorNo
   ENDTRY
NEXT

* Through a parameter passed by reference, and a PRIVATE of the caller.
PRIVATE pObject
pObject = CREATEOBJECT("Holder")
? ByReference(@oSaved), FromPrivate()
? o.nLater, o.nValue + o.nLater

FUNCTION ByReference(toObject)
   RETURN toObject.nValue

FUNCTION FromPrivate
   RETURN pObject.nValue

DEFINE CLASS Holder AS Custom
   nValue = 1
ENDDEFINE

DEFINE CLASS Computed AS Custom
   PROCEDURE nValue_Access
      RETURN "computed"
   ENDPROC
ENDDEFINE
