* adel, acopy, aelement, asubscript, alines, aenv, array and their errors.
a = array("a", "b", "c", "d")
? "adel moves, never shrinks:", adel(a, 2), alen(a), a[1], a[2], a[3], vartype(a[4])
DIMENSION g(3, 2)
g[1, 1] = "r1"
g[2, 1] = "r2"
g[3, 1] = "r3"
? "adel of a row:", adel(g, 1), alen(g, 1), g[1, 1], g[2, 1], vartype(g[3, 1])

src = array(1, 2, 3, 4, 5)
dst = .F.
? "acopy makes the target:", acopy(src, dst), alen(dst), dst[5]
dst = array("x", "y")
? "acopy grows the target:", acopy(src, dst, 2, 3, 2), alen(dst), dst[1], dst[2], dst[4]
? "acopy of the rest:", acopy(src, dst, 4), dst[1], dst[2], dst[3]
src[1] = 99
? "a copy is its own:", dst[1]

DIMENSION h(2, 3)
? "aelement:", aelement(h, 2, 1), aelement(h, 6), asubscript(h, 4, 1), asubscript(h, 4, 2)
? "one dimension:", aelement(src, 3), asubscript(src, 3, 1)

lines = .F.
text = "one" + chr(13) + chr(10) + "two" + chr(10) + chr(10) + " three " + chr(13) + chr(10)
? "alines:", alines(lines, text), lines[1], lines[2], "[" + lines[3] + "]", "[" + lines[4] + "]"
? "trimmed, no empties:", alines(lines, text, 1 + 4), "[" + lines[3] + "]"
? "last empty kept:", alines(lines, text, 2), "[" + lines[5] + "]"
? "own separators:", alines(lines, "a;b,c", 0, ";", ","), lines[1] + lines[2] + lines[3]
? "case of separators:", alines(lines, "1x2X3", 8, "x"), alines(lines, "1x2X3", 0, "x")
? "separators kept:", alines(lines, "a;b;", 16, ";"), lines[1] + lines[2]
? "empty text:", alines(lines, ""), alen(lines)

number = 5
env = array(1)
? "aenv rows and columns:", aenv(env) = alen(env, 1), alen(env, 2)
? "aenv finds PATH:", ascan(env, "PATH") > 0

* An array parameter is checked by the call itself: anything else is 11.
? "a non-array:", fails("alen(src[1])"), fails("ascan(number, 1)"), fails("asort(number)")
? "1234 out of range:", fails("adel(a, 5)"), fails("ascan(a, 1, 9)"), fails("aelement(h, 3, 1)"), fails("asubscript(h, 7, 1)"), fails("acopy(src, dst, 6)")
? "11 for bad options:", fails("alen(a, 3)"), fails("asubscript(src, 1, 2)"), fails("alines(lines, 'x', 64)")

FUNCTION fails(expression)
TRY
  = evaluate(expression)
CATCH TO e
  RETURN e.errorno
ENDTRY
RETURN 0
