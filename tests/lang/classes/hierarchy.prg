* Three classes in a line: Init takes parameters and passes them up with
* DODEFAULT, methods override and reach their ancestors' versions, and the
* class names answer as declared.
o = CREATEOBJECT("Manager", "Ada", 52, "Research")
? o.cName, o.nAge, o.cDept
? o.Describe()
? o.Class, o.ParentClass, o.BaseClass
? o.Greeting()
e = CREATEOBJECT("Employee", "Bob", 30)
? e.Describe()
? e.Greeting()
* A class of the line may come later in the file than its subclass.
t = CREATEOBJECT("Temp", "Cy", 20, "Ops")
? t.Describe(), t.Class, t.ParentClass
* A method DODEFAULT can't take further up gives .T.
? o.Root()

DEFINE CLASS Temp AS Manager
   PROCEDURE Describe
      RETURN "temp " + DODEFAULT()
   ENDPROC
ENDDEFINE

DEFINE CLASS Person AS Custom
   cName = ""
   nAge = 0
   cTitle = "person"
   PROCEDURE Init(tcName, tnAge)
      ? "Person.Init", tcName, tnAge
      This.cName = tcName
      This.nAge = tnAge
   ENDPROC
   FUNCTION Describe
      RETURN This.cName + " (" + This.cTitle + ")"
   ENDFUNC
   FUNCTION Greeting
      RETURN "Hello from " + This.Class
   ENDFUNC
   FUNCTION Root
      RETURN DODEFAULT()
   ENDFUNC
ENDDEFINE

DEFINE CLASS Employee AS Person
   cTitle = "staff"
   PROCEDURE Init(tcName, tnAge)
      ? "Employee.Init", tcName
      DODEFAULT(tcName, tnAge)
   ENDPROC
   FUNCTION Describe
      RETURN "employee " + DODEFAULT()
   ENDFUNC
ENDDEFINE

DEFINE CLASS Manager AS Employee
   cDept = ""
   PROCEDURE Init(tcName, tnAge, tcDept)
      ? "Manager.Init", tcDept
      This.cDept = tcDept
      RETURN DODEFAULT(tcName, tnAge)
   ENDPROC
   FUNCTION Describe
      RETURN "manager of " + This.cDept + ", " + DODEFAULT()
   ENDFUNC
ENDDEFINE
