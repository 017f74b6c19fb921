* Classes that can't be made: unknown names (1733, named as written),
* abstract classes (9005), and members asked of what isn't an object (1924).
= Attempt([CREATEOBJECT("NoSuchClass")])
= Attempt([CREATEOBJECT("Orphan")])
= Attempt([CREATEOBJECT("Collection.ForwardIndexIterator")])
= Attempt([CREATEOBJECT(.NULL.)])
x = 5
= Attempt([x.Foo()])
= Attempt([NEWOBJECT("Square", "lib/nowhere.prg")])
= Attempt([NEWOBJECT("Circle", "lib/SHAPES.PRG")])
* NEWOBJECT loads the file it names; a parent OF a file is found there.
s = NEWOBJECT("Square", "lib/SHAPES.PRG")
? s.Area(), s.Class
SET PATH TO lib
b = CREATEOBJECT("BigSquare")
? b.Area(), b.ParentClass

FUNCTION Attempt(tcCode)
   TRY
      = &tcCode
      ? tcCode, "made"
   CATCH TO e
      ? e.ErrorNo, e.Message
   ENDTRY
ENDFUNC

DEFINE CLASS Orphan AS NoSuchParent
ENDDEFINE

DEFINE CLASS BigSquare AS Square OF shapes.prg
   nSide = 5
ENDDEFINE
