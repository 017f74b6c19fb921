* Constant and run-time arithmetic agree, and strings join.
? 1 + 2 * 3
? (1 + 2) * 3
? "a" + "bc"
x = 10
? x - 4, x * x
s = "ab"
s = s + "cd"
? s, len(s)
