* STORE evaluates its value once; DIMENSION, array elements, WITH.
calls = 0
STORE counted() TO a, b, c
? a, b, c, "calls:", calls
DIMENSION grid(2, 3)
grid[1, 1] = 10
grid[2, 3] = 20
? grid[1, 1] + grid[2, 3], vartype(grid[1, 2])
DIMENSION list(3)
STORE "x" TO list
? list[1] + list[2] + list[3]
list[2] = "y"
DIMENSION list(4)
? list[1] + list[2], vartype(list[4])
s = ""
FOR i = 1 TO 3
  s = s + chr(48 + i)
NEXT
? s

FUNCTION counted
calls = calls + 1
RETURN calls * 7
