* C functions through DECLARE: integers, doubles, strings and "@" buffers.
DECLARE INTEGER strlen IN libc.so.6 STRING text
? strlen("hello"), strlen("")
DECLARE INTEGER getpid IN libc.so.6
? getpid() > 0, getpid() = getpid()
DECLARE LONG LONG labs IN libc.so.6 LONG LONG value
? labs(-5000000000)
DECLARE DOUBLE zoex_half IN (GETENV("ZOBASE_EXAMPLE_EXTENSION")) DOUBLE value
? zoex_half(5)
* Every kind at once: INTEGER, DOUBLE, STRING, a buffer and a count by reference.
DECLARE INTEGER zoex_describe IN (GETENV("ZOBASE_EXAMPLE_EXTENSION")) ;
   INTEGER base, DOUBLE factor, STRING text, STRING @buffer, INTEGER @count
buffer = SPACE(20)
count = 20
? zoex_describe(100, 2.5, "box", @buffer, @count)
? "[" + LEFT(buffer, count) + "]", LEN(buffer), count
* A buffer too short for the answer keeps its length.
buffer = SPACE(4)
count = 4
? zoex_describe(0, 1, "ab", @buffer, @count), "[" + LEFT(buffer, 3) + "]", LEN(buffer), count
* A crash in the callee is error 2027; the program goes on.
DECLARE INTEGER zoex_crash IN (GETENV("ZOBASE_EXAMPLE_EXTENSION")) INTEGER nowhere
TRY
   ? zoex_crash(0)
CATCH TO e
   ? e.ErrorNo, e.Message
ENDTRY
? strlen("still here")
* What can't be declared.
TRY
   DECLARE INTEGER strlen IN no_such_library.so STRING text
CATCH TO e
   ? e.ErrorNo, e.Message
ENDTRY
TRY
   DECLARE INTEGER no_such_function IN libc.so.6
CATCH TO e
   ? e.ErrorNo, e.Message
ENDTRY
TRY
   DECLARE OBJECT strlen IN libc.so.6 STRING text
CATCH TO e
   ? e.ErrorNo, e.Message
ENDTRY
TRY
   ? strlen(1)
CATCH TO e
   ? e.ErrorNo
ENDTRY
