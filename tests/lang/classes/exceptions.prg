* What CATCH receives is an object of the built-in class Exception.
TRY
   ERROR 1098, "custom failure"
CATCH TO e
   ? e.Class, e.BaseClass, e.ErrorNo, e.Message
ENDTRY
* THROW wraps any value, objects included, in an Exception's UserValue.
TRY
   THROW CREATEOBJECT("AppError", "disk full")
CATCH TO e
   ? e.Class, e.UserValue.Class, e.UserValue.cReason, e.UserValue.Describe()
ENDTRY
* An Exception can be made and filled like any object.
x = CREATEOBJECT("Exception")
x.ErrorNo = 42
x.Message = "made by hand"
? x.ErrorNo, x.Message, VARTYPE(x.Detail)
* Subclasses of the built-in classes keep their members.
TRY
   ? CREATEOBJECT("AppError", "x").Nothing
CATCH TO e
   ? e.ErrorNo, e.Message
ENDTRY

DEFINE CLASS AppError AS Exception
   cReason = ""
   PROCEDURE Init(tcReason)
      This.cReason = tcReason
      This.Message = "application: " + tcReason
   ENDPROC
   FUNCTION Describe
      RETURN This.Message
   ENDFUNC
ENDDEFINE
