* The short ways to members: a plain stored property is read and written
* without entering its handler, and THIS.name in a method is one
* instruction. Each must give way, at the same place in the code, where a
* handler must run, where the member tables changed, or where the caller
* may not see the member.
LOCAL aObjects[3], i
aObjects[1] = CREATEOBJECT("Plain")
aObjects[2] = CREATEOBJECT("Computed")
aObjects[3] = CREATEOBJECT("Guarded")
* One read and one write instruction meet three classes in turn.
FOR i = 1 TO 3
   = Put(aObjects[i], 10 * i)
   ? "read", i, Show(aObjects[i])
ENDFOR
* A member added to one object, then removed, between runs of the same
* instructions; a second object of the same class never had it.
o = CREATEOBJECT("Custom")
p = CREATEOBJECT("Custom")
FOR i = 1 TO 4
   DO CASE
   CASE i = 2
      o.AddProperty("nValue", 5)
   CASE i = 3
      = Put(o, 6)
   CASE i = 4
      = REMOVEPROPERTY(o, "nValue")
   ENDCASE
   ? "added", i, Attempt(o), Attempt(p)
ENDFOR
* THIS.name: PROTECTED and HIDDEN as the method's class sees them.
s = CREATEOBJECT("Sub")
? "own hidden through a subclass object:", s.BaseSecret()
? "hidden from the subclass:", s.SubSecret()
? "protected from the subclass:", s.SubProtected()
? "protected from outside:", Attempt2(s, "nShared")
? "hidden from outside:", Attempt2(s, "nSecret")
* A parent's method reading THIS.name meets the subclass's access method.
? "parent method, subclass access:", s.BaseValue()
* Inside its own access method the property is the stored value.
? "inside the access method:", s.nValue
* A chain THIS.child.name: the first step short, the second the usual way.
? "chain:", s.ChildValue()
* A plain write releases the value it replaces: DESTROY runs once.
h = CREATEOBJECT("Plain")
h.nValue = CREATEOBJECT("Noisy")
h.nValue = 1
? "after the write", h.nValue
* THIS.name = value where the value's code rebinds THIS by reference: the
* write still goes to the object THIS was when the statement began.
w = CREATEOBJECT("Rebinder")
? "rebound:", w.Rebind(), w.nValue
* Writes from inside the class meet the assign method of a subclass.
g = CREATEOBJECT("Guarded")
g.SetFromInside(4)
? "assign from inside:", g.nValue
* THIS.name = THIS.name + parameter in one instruction: a field of the
* current work area named as the parameter hides it there too.
k = CREATEOBJECT("Plain")
k.Step(3)
CREATE CURSOR hider (tnStep N(5))
APPEND BLANK
REPLACE tnStep WITH 100
k.Step(3)
USE
k.Step(3)
? "stepped:", k.nValue

FUNCTION Show(toObject)
   RETURN toObject.nValue
ENDFUNC

FUNCTION Put(toObject, tvValue)
   toObject.nValue = tvValue
ENDFUNC

FUNCTION Attempt(toObject)
   TRY
      RETURN Show(toObject)
   CATCH TO e
      RETURN e.ErrorNo
   ENDTRY
ENDFUNC

FUNCTION Attempt2(toObject, tcName)
   TRY
      RETURN EVALUATE("toObject." + tcName)
   CATCH TO e
      RETURN e.ErrorNo
   ENDTRY
ENDFUNC

DEFINE CLASS Plain AS Custom
   nValue = 0
   PROCEDURE SetFromInside(tvValue)
      This.nValue = tvValue
   ENDPROC
   PROCEDURE Step(tnStep)
      This.nValue = This.nValue + tnStep
   ENDPROC
ENDDEFINE

DEFINE CLASS Rebinder AS Plain
   FUNCTION Rebind
      This.nValue = Replaced(@This)
      RETURN This.nValue
   ENDFUNC
ENDDEFINE

FUNCTION Replaced(toTarget)
   toTarget = CREATEOBJECT("Plain")
   toTarget.nValue = -1
   RETURN 5
ENDFUNC

DEFINE CLASS Computed AS Plain
   FUNCTION nValue_access
      RETURN "computed from " + TRANSFORM(This.nValue)
   ENDFUNC
ENDDEFINE

* An assign method added by a subclass to a plain property of its parent.
DEFINE CLASS Guarded AS Plain
   PROCEDURE nValue_assign(tvValue)
      This.nValue = -tvValue
   ENDPROC
ENDDEFINE

DEFINE CLASS Noisy AS Custom
   PROCEDURE Destroy
      ? "destroyed"
   ENDPROC
ENDDEFINE

DEFINE CLASS Base AS Custom
   HIDDEN nSecret
   PROTECTED nShared
   nSecret = 42
   nShared = 7
   nValue = 1
   oChild = .NULL.
   FUNCTION BaseSecret
      RETURN This.nSecret
   ENDFUNC
   FUNCTION BaseValue
      RETURN This.nValue
   ENDFUNC
   FUNCTION ChildValue
      This.oChild = CREATEOBJECT("Plain")
      This.oChild.nValue = 99
      RETURN This.oChild.nValue
   ENDFUNC
ENDDEFINE

DEFINE CLASS Sub AS Base
   nValue = 500
   FUNCTION SubSecret
      TRY
         RETURN This.nSecret
      CATCH TO e
         RETURN e.ErrorNo
      ENDTRY
   ENDFUNC
   FUNCTION SubProtected
      RETURN This.nShared
   ENDFUNC
   FUNCTION nValue_access
      RETURN This.nValue + 1000
   ENDFUNC
ENDDEFINE
