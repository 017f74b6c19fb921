* The environment, the system, and the console dialog.
? "getenv:", getenv("PATH") == getenv("PATH"), len(getenv("PATH")) > 0, getenv("ZOBASE_NOT_SET_X") == ""
? "setenv:", setenv("ZOBASE_TEST_VAR", "one two"), getenv("ZOBASE_TEST_VAR"), getenv("zobase_test_var") == ""
? "programs see it:", system([printf %s "$ZOBASE_TEST_VAR"])
? "unsetenv:", unsetenv("ZOBASE_TEST_VAR"), unsetenv("ZOBASE_TEST_VAR"), getenv("ZOBASE_TEST_VAR") == "", system([printf %s "${ZOBASE_TEST_VAR-gone}"])
? "bad names:", fails("setenv('', 'x')"), fails("setenv('A=B', 'x')"), fails("unsetenv('')")

dir = chrtran(system("mktemp -d"), chr(10), "")
setenv("XDG_DATA_HOME", dir)
home = userhomedir()
? "userhomedir:", home == dir + "/zobase/", directory(home) == dir + "/zobase"
system("rm -r " + escapearg(dir))

? "os:", left(os(), 6), os(1) == os(), len(os(3)) > 0, os(2) == ""
? "version:", left(version(), 7), version(4), version(4) == sys(9001), fails("version(2)")
? "sys:", sys(17), sys(5) == "", sys(9000) > 0, len(sys(2015)), left(sys(2015), 1), sys(2015) == sys(2015), len(sys(3))
? "folders:", sys(2003) + "/" == curdir(), right(sys(2004), 1), len(sys(2023)) > 0, sys(2004) == justpath(curexe()) + "/"
? "sys(1) and sys(2) are numbers as text:", isdigits(sys(1)), isdigits(sys(2))
? "unknown code:", fails("sys(12345)")
? "sleep:", sleep(1), fails("sleep(-1)")
? "sigabort:", sigabort(), sigabort()

* The console dialog: an answer per line, "invalid input" for others, end
* of input takes the choice that backs out.
? "yes, no, cancel:", messagebox("Save the file?", 3, "Editor")
? "retry, cancel:", messagebox("Try again?", 5)
? "ok alone:", messagebox("Done.")
? "end of input:", messagebox("Save the file?", 3), messagebox("Go on?", 4), messagebox("Done.", 0)
? "bad buttons:", fails("messagebox('x', 9)")

FUNCTION isdigits(text)
RETURN len(chrtran(text, "0123456789", "")) = 0 AND len(text) > 0

FUNCTION fails(expression)
TRY
  = evaluate(expression)
CATCH TO e
  RETURN e.errorno
ENDTRY
RETURN 0
