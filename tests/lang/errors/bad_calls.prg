* Built-in calls with the wrong arguments are compile errors, never crashes,
* also where the compiler would work out the result in advance.
TRY
  ? evaluate([alltrim()])
CATCH TO e
  ? "alltrim():", e.errorno
ENDTRY
TRY
  ? evaluate([substr(substr())])
CATCH TO e
  ? "substr(substr()):", e.errorno
ENDTRY
? "still running"
