* Access and assign methods fire on every read and write of their property,
* from outside and from inside the class alike; inside its own method the
* property itself is the stored value, with no recursion.
o = CREATEOBJECT("Thermometer")
? "start", o.nCelsius
o.nCelsius = 25
? "read", o.nCelsius
o.nCelsius = -500
? "refused", o.nCelsius
? "inside", o.Warmer(5)
* A property with only an access method exists all the same.
? "computed", o.nFahrenheit
o.nFahrenheit = 1
? "stored under it", o.nFahrenheit
* An assign method receives the value first, then the subscripts.
o.aLog[2] = "second"
? "element", o.aLog[2]
* A method named _access alone is a plain method.
? "plain", o._access()
* Assignments made in Init go through the assign method too.
p = CREATEOBJECT("Thermometer", 30)
? "from init", p.nCelsius

DEFINE CLASS Thermometer AS Custom
   nCelsius = 0
   DIMENSION aLog[3]
   PROCEDURE Init(tnStart)
      IF VARTYPE(tnStart) = "N"
         This.nCelsius = tnStart
      ENDIF
   ENDPROC
   FUNCTION nCelsius_access
      ? "  (access)"
      RETURN This.nCelsius
   ENDFUNC
   PROCEDURE nCelsius_assign(tnValue)
      ? "  (assign", tnValue, ")"
      IF tnValue >= -273
         This.nCelsius = tnValue
      ENDIF
   ENDPROC
   FUNCTION Warmer(tnBy)
      This.nCelsius = This.nCelsius + tnBy
      RETURN This.nCelsius
   ENDFUNC
   FUNCTION nFahrenheit_access
      RETURN IIF(VARTYPE(This.nFahrenheit) = "L", This.nCelsius * 9 / 5 + 32, This.nFahrenheit)
   ENDFUNC
   PROCEDURE aLog_assign(tvValue, tnIndex)
      ? "  (assign element", tnIndex, tvValue, ")"
      This.aLog[tnIndex] = tvValue
   ENDPROC
   FUNCTION _access
      RETURN "just a method"
   ENDFUNC
ENDDEFINE
