PUBLIC shared
shared = 41
* program, pcount, parameters, astackinfo and execscript.
? "top level:", program(), program(-1), program(1), program(2) == "", pcount()
= outer("a", "b", "c")
* parameters() counts the call made last: inner(1), inside outer.
? "after a call of three:", parameters(), pcount()
= outer()
? "after a call of none:", parameters()
? "the running file:", justfname(sys(16)), justfname(sys(16, 1)), sys(16, 5) == ""

* A script is a program of its own: parameters, functions, a result.
script = "LPARAMETERS a, b" + chr(10) + "RETURN twice(a) + b" + chr(10)
script = script + "FUNCTION twice(x)" + chr(10) + "RETURN x * 2"
? "execscript:", execscript(script, 20, 2), execscript("RETURN pcount()"), execscript("RETURN program()")
? "it sees public variables:", execscript("RETURN shared + 1")
? "a script without RETURN:", execscript("x = 1")
? "wrong script:", fails("execscript('RETURN 1 +')"), fails("execscript('ERROR 1098')")
? "too many arguments:", fails([execscript("RETURN 1", 1)])

FUNCTION outer(a, b, c)
? "in outer:", program(), program(1), program(-1), pcount(), parameters()
= inner(1)
? "after inner:", parameters(), pcount()
RETURN .T.

FUNCTION inner(x)
LOCAL info
info = array(1)
? "in inner:", program(), program(2), program(3), astackinfo(info)
? "stack rows:", info[1, 1], info[1, 3], justfname(info[1, 2]), info[3, 3], info[3, 5], alltrim(info[3, 6])
RETURN .T.

FUNCTION fails(expression)
TRY
  = evaluate(expression)
CATCH TO e
  RETURN e.errorno
ENDTRY
RETURN 0
