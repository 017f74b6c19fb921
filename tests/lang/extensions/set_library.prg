* An extension library's functions and command, called like built-ins.
SET LIBRARY TO (GETENV("ZOBASE_EXAMPLE_EXTENSION"))
? zoex_add(2, 3)
? zoex_add(2.9, 1)
? ZOEX_GREET("Ada")
? zoex_repeat("ab"), zoex_repeat("ab", 3)
DO zoex_remember WITH "a note"
? zoex_recall()
* Too few and too many arguments, a wrong type.
TRY
   ? zoex_add(1)
CATCH TO e
   ? e.ErrorNo
ENDTRY
TRY
   ? zoex_add(1, 2, 3)
CATCH TO e
   ? e.ErrorNo
ENDTRY
TRY
   ? zoex_add("x", 2)
CATCH TO e
   ? e.ErrorNo
ENDTRY
* Loading it twice keeps one entry; SET LIBRARY TO empties the list.
SET LIBRARY TO (GETENV("ZOBASE_EXAMPLE_EXTENSION")) ADDITIVE
SET LIBRARY TO
TRY
   ? zoex_add(1, 2)
CATCH TO e
   ? e.ErrorNo, e.Message
ENDTRY
TRY
   SET LIBRARY TO no_such_library.so
CATCH TO e
   ? e.ErrorNo, e.Message
ENDTRY
