* FOR EACH over arrays: values and keys, EXIT and LOOP, a walk over a snapshot.
DIMENSION list(4)
list[1] = "a"
list[2] = 2
list[3] = .T.
list[4] = "d"
types = ""
FOR EACH item IN list
  types = types + vartype(item)
ENDFOR
? "types:", types
FOR EACH KEY k VALUE v IN list
  ?? k, v, ""
ENDFOR
?
DIMENSION grid(2, 3)
FOR i = 1 TO 6
  grid[i] = i * 10
NEXT
total = 0
FOR EACH KEY k VALUE cell IN grid
  total = total + cell
  ?? k
NEXT
?
? "grid total:", total, "last key:", k
DIMENSION numbers(8)
FOR i = 1 TO 8
  numbers[i] = i
NEXT
s = ""
FOR EACH n IN numbers
  IF n % 2 = 0
    LOOP
  ENDIF
  IF n > 5
    EXIT
  ENDIF
  s = s + chr(48 + n)
ENDFOR
? "odd up to 5:", s, "stopped at:", n
pairs = ""
FOR EACH a IN numbers
  IF a > 2
    EXIT
  ENDIF
  FOR EACH b IN numbers
    IF b > 3
      EXIT
    ENDIF
    pairs = pairs + chr(48 + a) + chr(48 + b) + " "
  ENDFOR
ENDFOR
? "nested:", pairs
rounds = 0
seen = ""
FOR EACH item IN list
  rounds = rounds + 1
  seen = seen + vartype(item)
  IF rounds = 1
    list[4] = 99
  ENDIF
  IF rounds = 2
    DIMENSION list(1)
  ENDIF
ENDFOR
? "snapshot:", rounds, seen, alen_of_list()
TRY
  FOR EACH x IN 42
    ? "no round"
  ENDFOR
CATCH TO e
  ? "number:", e.errorno
ENDTRY
DIMENSION two(2)
two[1] = "first"
two[2] = "second"
walker = get_enumerator(two)
? "before the first:", error_of_value(walker)
? walker.movenext(), walker.key, walker.value
? walker.movenext(), walker.key, walker.value
? walker.movenext(), walker.movenext(), "after the end:", error_of_value(walker)
TRY
  walker.value = 1
CATCH TO e
  ? "assigned:", e.errorno
ENDTRY

FUNCTION error_of_value(walker)
TRY
  = walker.value
CATCH TO e
  RETURN e.errorno
ENDTRY
RETURN 0

FUNCTION alen_of_list
TRY
  = list[2]
CATCH TO e
  RETURN "one element left"
ENDTRY
RETURN "still four"
