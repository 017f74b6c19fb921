* Character fields of a UTF-8 table hold as many characters as their width,
* each of one to four bytes: shorter texts are padded, longer ones cut at a
* whole character, in writing and in reading.
CREATE TABLE u CODEPAGE = 65001 (c C(5), k C(3))
APPEND BLANK
DIMENSION texts(9)
texts(1) = "abc"
texts(2) = "abcde"
texts(3) = "abcdefgh"
texts(4) = "ab€"
texts(5) = "abcd€"
texts(6) = "äöüßé"
texts(7) = "äöüßéxyz"
texts(8) = "€€€€€€"
texts(9) = ""
FOR i = 1 TO 9
   REPLACE c WITH texts(i)
   ? "[" + c + "]", len(c), len(c + "|")
NEXT
REPLACE k WITH "😀😀😀😀"
? "[" + k + "]", len(k)
REPLACE k WITH "a😀"
? "[" + k + "]", len(k)
APPEND BLANK
REPLACE c WITH "xy€"
REPLACE k WITH "zz"
SCAN
   ? recno(), "[" + c + "]", "[" + k + "]", len(c)
ENDSCAN
