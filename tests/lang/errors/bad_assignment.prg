* A constant cannot take a value: the compiler reports it at its place,
* and nothing runs.
? "not run"
TEXT TO "s"
x
ENDTEXT
