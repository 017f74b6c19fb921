* Build a string of 1,000,000 pieces, then 1,000,000 times upper(substr(...)).
c = ""
FOR i = 1 TO 1000000
   c = c + "ab" + chr(97 + i % 26)
NEXT
n = 0
nLen = len(c) - 16
FOR i = 1 TO 1000000
   n = n + len(upper(substr(c, 1 + (i * 7) % nLen, 16)))
NEXT
? "result:", len(c), n
