* An object lives while anything refers to it: Destroy runs once, when the
* last reference goes, wherever that reference was kept.
a = CREATEOBJECT("Tracked", "shared")
b = a
LOCAL aList[2]
aList[2] = b
? "three references"
a = .NULL.
? "variable a let go"
b = 0
? "variable b let go"
aList[2] = 0
? "array element overwritten: gone above"
* Passing an object to a function keeps it for the call only.
= Hold(CREATEOBJECT("Tracked", "argument"))
? "after the call"
* A value returned from a function survives the function's frame.
c = Make("returned")
? "got", c.cName
c = .NULL.
* Destroy may take the object again; it is destroyed all the same.
PUBLIC gKeep
d = CREATEOBJECT("Clinger")
d = .NULL.
? "clinger kept:", VARTYPE(gKeep)
TRY
   ? gKeep.Class
CATCH TO e
   ? "but destroyed:", e.ErrorNo
ENDTRY
* Two objects that refer to each other keep each other alive: reference
* counting never frees a cycle, so neither Destroy runs.
x = CREATEOBJECT("Node", "x")
y = CREATEOBJECT("Node", "y")
x.oPeer = y
y.oPeer = x
x = .NULL.
y = .NULL.
LOCAL aLive[1]
? "nodes still alive:", AINSTANCE(aLive, "Node")
* Breaking the cycle by hand frees both.
aLive[1].oPeer = .NULL.
aLive[2].oPeer = .NULL.
aLive = 0
? "cycle broken"
* Init returning .F. refuses the object: CREATEOBJECT gives .NULL. and the
* object goes without its Destroy.
r = CREATEOBJECT("Refuser")
? "refused:", ISNULL(r)
? "end"

FUNCTION Hold(toObject)
   ? "holding", toObject.cName
ENDFUNC

FUNCTION Make(tcName)
   LOCAL o
   o = CREATEOBJECT("Tracked", tcName)
   RETURN o
ENDFUNC

DEFINE CLASS Tracked AS Custom
   cName = ""
   PROCEDURE Init(tcName)
      This.cName = tcName
   ENDPROC
   PROCEDURE Destroy
      ? "Destroy", This.cName
   ENDPROC
ENDDEFINE

DEFINE CLASS Clinger AS Custom
   PROCEDURE Destroy
      ? "Destroy of the clinger"
      gKeep = This
   ENDPROC
ENDDEFINE

DEFINE CLASS Node AS Custom
   cName = ""
   oPeer = .NULL.
   PROCEDURE Init(tcName)
      This.cName = tcName
   ENDPROC
   PROCEDURE Destroy
      ? "Destroy node", This.cName
   ENDPROC
ENDDEFINE

DEFINE CLASS Refuser AS Custom
   PROCEDURE Init
      ? "Init refuses"
      RETURN .F.
   ENDPROC
   PROCEDURE Destroy
      ? "never printed"
   ENDPROC
ENDDEFINE
