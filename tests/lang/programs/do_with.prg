* DO runs a procedure of the same file; WITH passes variables by reference.
x = 1
DO bump WITH x
? x
DO bump WITH (x)
? x
DO greet WITH "world", 3
? "done"

PROCEDURE bump
PARAMETERS n
n = n + 10

PROCEDURE greet
LPARAMETERS who, times
? "hello " + who, times
