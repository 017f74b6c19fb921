* Only functions: the one named like the file runs.
FUNCTION helper(n)
RETURN n * 2

PROCEDURE stem_entry
? helper(21)
ENDPROC
