* name(i) and name(i, j) read an array element when no function of that
* name exists; a function of that name still wins.
DIMENSION list[3]
list[2] = "second"
? list(2)
DIMENSION grid[2, 3]
grid[2, 3] = 23
? grid(2, 3), grid(6)
LOCAL ARRAY mine[2]
mine[1] = "local"
? mine(1)
? fromfunction()
DIMENSION twice[2]
twice[1] = "the array"
? twice(1)
TRY
  ? list(4)
CATCH TO e
  ? "out of range:", e.errorno
ENDTRY
notarray = 5
TRY
  ? notarray(1)
CATCH TO e
  ? "not an array:", e.errorno, e.message
ENDTRY

FUNCTION fromfunction
LOCAL inner[2]
inner[2] = "in a function"
RETURN inner(2)

FUNCTION twice(n)
RETURN "the function wins"
