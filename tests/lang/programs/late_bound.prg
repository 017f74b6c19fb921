* A call to a function this file does not define goes by name: it is found
* at run time in a program loaded later.
TRY
  ? helper_function(2)
CATCH TO e
  ? "not yet loaded:", e.errorno, e.message
ENDTRY
DO late_bound_library
? helper_function(2)
