* Macro text and evaluate() re-enter the VM: nesting has a limit, a macro
* statement inside macro text is recursive, and both are errors a TRY catches.
m = "? &m"
TRY
  &m
CATCH TO e
  ? e.errorno, e.message
ENDTRY
m = "evaluate(m)"
TRY
  ? evaluate(m)
CATCH TO e
  ? e.errorno, e.message
ENDTRY
* Nesting that ends is fine.
? evaluate("evaluate('evaluate([6 * 7])')")
m = "2 * 21"
? &m
? "after"
