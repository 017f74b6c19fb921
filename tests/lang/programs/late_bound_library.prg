* Loaded by late_bound.prg; its main program only announces itself.
? "library loaded"

FUNCTION helper_function(n)
RETURN n * 21
