* Where CREATEOBJECT finds a class: this file, the SET PROCEDURE files, the
* programs loaded so far; a parent is found the same way when its first
* instance is made.
= Attempt("Square")
SET PATH TO lib
SET PROCEDURE TO shapes
= Attempt("Square")
= Attempt("Cube")
= Attempt("Bicycle")
DO vehicles
= Attempt("Bicycle")

FUNCTION Attempt(tcClass)
   LOCAL o
   TRY
      o = CREATEOBJECT(tcClass)
      ? tcClass, "made:", o.Describe()
   CATCH TO e
      ? tcClass, e.ErrorNo, e.Message
   ENDTRY
ENDFUNC

DEFINE CLASS Cube AS Square
   FUNCTION Describe
      RETURN "a cube on a face of " + LTRIM(CHR(48 + This.Area()))
   ENDFUNC
ENDDEFINE
