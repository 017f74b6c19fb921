* DECLARE ... AS: the function answers to its alias only, and a second
* alias of the same C function lives beside the first.
DECLARE INTEGER strlen IN libc.so.6 AS cstrlen STRING text
? cstrlen("hello"), CSTRLEN("")
DECLARE LONG LONG labs IN libc.so.6 AS abs64 LONG LONG value
DECLARE LONG LONG labs IN libc.so.6 AS magnitude LONG LONG value
? abs64(-5000000000), magnitude(-7)
attempt('? strlen("hello")')
DECLARE DOUBLE zoex_half IN (GETENV("ZOBASE_EXAMPLE_EXTENSION")) AS half DOUBLE value
DECLARE INTEGER zoex_describe IN (GETENV("ZOBASE_EXAMPLE_EXTENSION")) AS describe ;
   INTEGER base, DOUBLE factor, STRING text, STRING @buffer, INTEGER @count
buffer = SPACE(20)
count = 20
? half(9), describe(1, 2, "x", @buffer, @count), LEFT(buffer, count)
* CLEAR DLLS with names drops those; the others stay.
CLEAR DLLS abs64, half
? magnitude(-3), cstrlen("abc")
attempt("? abs64(-1)")
attempt("? half(1)")
attempt("CLEAR DLLS never_declared")
* Declaring again after a drop works as the first time.
DECLARE DOUBLE zoex_half IN (GETENV("ZOBASE_EXAMPLE_EXTENSION")) AS half DOUBLE value
? half(3)
* RELEASE LIBRARY drops the library's own functions and commands and what
* was DECLAREd in it; declarations of other libraries stay.
SET LIBRARY TO (GETENV("ZOBASE_EXAMPLE_EXTENSION"))
? zoex_add(2, 3), half(5)
RELEASE LIBRARY (GETENV("ZOBASE_EXAMPLE_EXTENSION"))
attempt("? zoex_add(2, 3)")
attempt('? describe(1, 2, "x", @buffer, @count)')
attempt('DO zoex_remember WITH "gone"')
? cstrlen("still"), magnitude(-4)
* Loading it again after the release.
SET LIBRARY TO (GETENV("ZOBASE_EXAMPLE_EXTENSION")) ADDITIVE
? zoex_add(1, 1)
* A library nobody loaded, and one that does not exist.
attempt("RELEASE LIBRARY libm.so.6")
attempt("RELEASE LIBRARY no_such_library.so")
* CLEAR DLLS alone drops every declared function.
CLEAR DLLS
attempt('? cstrlen("x")')
attempt("? magnitude(-1)")
? zoex_add(2, 2)
* The new words stay usable as names.
release = 1
dlls = 2
? release + dlls

PROCEDURE attempt(line)
TRY
  &line
CATCH TO e
  ? e.ErrorNo, e.Message
ENDTRY
