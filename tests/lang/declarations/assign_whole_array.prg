* Assigning a value to a whole array puts it in every element; the array
* and its shape stay. An array assigned to it replaces it.
DIMENSION a[3]
a = 7
? vartype(a), a[1], a[2], a[3]
TRY
  ? a[4]
CATCH TO e
  ? "still three elements:", e.errorno
ENDTRY
DIMENSION grid[2, 2]
grid = "x"
? grid[1, 1] + grid[1, 2] + grid[2, 1] + grid[2, 2]
LOCAL ARRAY loc[2]
loc = .T.
? loc[1], loc[2]
copy = a
copy = 0
? a[1], copy[1]
DIMENSION b[2]
b[1] = "new"
a = b
? a[1]
= fill(@a)
? a[1], a[2]

FUNCTION fill(target)
target = "by reference"
RETURN .T.
