* DO WHILE, FOR with steps, EXIT and LOOP, the FOR limit read once.
n = 0
DO WHILE n < 10
  n = n + 1
  IF n % 2 = 0
    LOOP
  ENDIF
  IF n > 7
    EXIT
  ENDIF
  ?? n
ENDDO
?
? "n =", n
s = 0
FOR i = 10 TO 1 STEP -3
  s = s + i
ENDFOR
? "down:", s, "i =", i
limit = 3
count = 0
FOR i = 1 TO limit
  limit = 100
  count = count + 1
NEXT
? "limit read once:", count
steps = ""
FOR i = 1 TO 9 STEP 2
  IF i = 5
    LOOP
  ENDIF
  steps = steps + chr(48 + i)
NEXT
? "loop applies the step once:", steps, i
FOR i = 1 TO 0
  ? "never"
NEXT
? "empty range leaves i at", i
total = 0
FOR a = 1 TO 3
  FOR b = 1 TO 3
    IF b > a
      EXIT
    ENDIF
    total = total + 1
  NEXT
NEXT
? "inner exit only:", total
k = 0
DO WHILE .T.
  k = k + 1
  TRY
    IF k = 3
      EXIT
    ENDIF
  CATCH
    ? "not reached"
  ENDTRY
ENDDO
? "exit from a try inside a loop:", k
