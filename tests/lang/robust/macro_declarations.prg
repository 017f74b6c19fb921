* PUBLIC and PARAMETERS run from macro text have no frame slot of their
* own: they make the variable alone and leave the frame's slots as they were.
m = "PUBLIC shared"
&m
shared = "program level"
? shared
show_locals()
? shared, created
m = "PARAMETERS p1, p2"
&m
? p1, p2

FUNCTION show_locals
LOCAL a, b, c
a = 1
b = 2
c = 3
m = "PUBLIC created"
&m
created = "in a function"
m = "PARAMETERS q"
&m
? a, b, c, q
? created
ENDFUNC
