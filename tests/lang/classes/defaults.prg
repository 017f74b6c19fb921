* Property defaults: computed when the class is compiled and copied into
* each instance, which then changes its own copy alone.
a = CREATEOBJECT("Box")
b = CREATEOBJECT("Box")
a.nCount = 5
a.cLabel = a.cLabel + "!"
? a.nCount, b.nCount
? a.cLabel, b.cLabel
* An array property: each instance writes its own elements.
a.aSlots[2] = "taken"
? a.aSlots[2], b.aSlots[2], b.aGrid[2, 4]
b.aGrid[2, 4] = 8
? a.aGrid[2, 4], b.aGrid[2, 4]
* A whole array assigned to a property is the instance's own too.
LOCAL aValues[2]
aValues[1] = "first"
a.aSlots = aValues
aValues[1] = "changed"
? a.aSlots[1], VARTYPE(b.aSlots[1])
* A subclass starts from its parent's defaults unless it declares its own.
d = CREATEOBJECT("BigBox")
? d.nCount, d.cLabel, d.nSize
* A property declared PROTECTED or HIDDEN alone exists, with .F.
? d.ShowHidden(), d.Peek()

DEFINE CLASS Box AS Custom
   nCount = 1 + 2
   cLabel = "box" + "-" + UPPER("a")
   nSize = 10
   DIMENSION aSlots[3]
   DIMENSION aGrid(2, 4)
   HIDDEN lSecret
   PROTECTED lPrivate
   FUNCTION ShowHidden
      RETURN This.lSecret
   ENDFUNC
ENDDEFINE

DEFINE CLASS BigBox AS Box
   nSize = 99
   FUNCTION Peek
      RETURN This.lPrivate
   ENDFUNC
ENDDEFINE
