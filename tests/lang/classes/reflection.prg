* Reflection: AMEMBERS, PEMSTATUS, GETPEM, ADDPROPERTY, REMOVEPROPERTY,
* AINSTANCE, INCREMENTREF and DECREMENTREF.
o = CREATEOBJECT("Gadget")
LOCAL aNames[1]
? "properties:", AMEMBERS(aNames, o)
= ShowRows(@aNames, 1)
? "with methods:", AMEMBERS(aNames, o, 1)
= ShowRows(@aNames, 2)
? "contained objects:", AMEMBERS(aNames, o, 2)
* Members added to one instance.
? ADDPROPERTY(o, "cColor", "red"), o.cColor
o.AddProperty("aSizes[3]", 0)
? o.aSizes[3]
? ADDPROPERTY(o, "nSpeed", 7), o.nSpeed
p = CREATEOBJECT("Gadget")
? "other instance:", PEMSTATUS(p, "cColor", 5), PEMSTATUS(o, "cColor", 5)
? REMOVEPROPERTY(o, "cColor"), PEMSTATUS(o, "cColor", 5)
= Attempt([REMOVEPROPERTY(o, "nSpeed")])
= Attempt([REMOVEPROPERTY(o, "cNever")])
= Attempt([ADDPROPERTY(o, "1bad")])
* PEMSTATUS: 0 changed, 1 read-only, 2 protected, 4 user-defined, 5 defined, 6 inherited.
o.nSpeed = 9
? "changed:", PEMSTATUS(o, "nSpeed", 0), PEMSTATUS(p, "nSpeed", 0)
? "read-only:", PEMSTATUS(o, "Class", 1), PEMSTATUS(o, "nSpeed", 1)
? "protected:", PEMSTATUS(o, "nSerial", 2), PEMSTATUS(o, "Spin", 2)
? "user-defined:", PEMSTATUS(o, "Spin", 4), PEMSTATUS(o, "Class", 4)
? "defined:", PEMSTATUS(o, "Spin", 5), PEMSTATUS(o, "nSerial", 5), PEMSTATUS(o, "cSecret", 5), PEMSTATUS(o, "Nothing", 5)
t = CREATEOBJECT("Turbo")
? "inherited:", PEMSTATUS(t, "Spin", 6), PEMSTATUS(t, "nBoost", 6)
* GETPEM reads a property as the language does, access methods included.
? GETPEM(o, "nSpeed"), GETPEM(t, "nBoost")
* AINSTANCE: the live objects of a class, in the order they were made.
? "gadgets:", AINSTANCE(aNames, "Gadget"), aNames[1] = o, aNames[2] = p
aNames = 0
? "no such class:", AINSTANCE(aNames, "NoSuchClass")
* INCREMENTREF and DECREMENTREF count uses that no variable holds.
k = CREATEOBJECT("Noisy")
? "uses:", INCREMENTREF(k)
k = .NULL.
? "still alive:", AINSTANCE(aNames, "Noisy")
? "uses left:", DECREMENTREF(aNames[1])
aNames = 0
? "end"

FUNCTION ShowRows(taRows, tnColumns)
   LOCAL i, lcLine
   lcLine = ""
   FOR i = 1 TO AMEMBERS(taRows, o, IIF(tnColumns = 1, 0, 1))
      lcLine = lcLine + IIF(tnColumns = 1, taRows[i], taRows[i, 1] + "/" + LEFT(taRows[i, 2], 1)) + " "
   ENDFOR
   ? lcLine
ENDFUNC

FUNCTION Attempt(tcCode)
   TRY
      = &tcCode
      ? tcCode, "done"
   CATCH TO e
      ? e.ErrorNo, e.Message
   ENDTRY
ENDFUNC

DEFINE CLASS Gadget AS Custom
   nSpeed = 1
   PROTECTED nSerial
   HIDDEN cSecret
   PROCEDURE Spin
      This.nSpeed = This.nSpeed + 1
   ENDPROC
ENDDEFINE

DEFINE CLASS Turbo AS Gadget
   nBoost = 2
   FUNCTION nBoost_access
      RETURN This.nBoost * 10
   ENDFUNC
ENDDEFINE

DEFINE CLASS Noisy AS Custom
   PROCEDURE Destroy
      ? "Noisy destroyed"
   ENDPROC
ENDDEFINE
