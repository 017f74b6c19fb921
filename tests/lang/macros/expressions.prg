* Macro substitution inside expressions, and evaluate().
x = "1 + 2"
? &x
name = "total"
total = 40
? &name + 2
n = "2"
val_2 = "second"
? val_&n.
? evaluate("1+2")
? evaluate("total * 2")
