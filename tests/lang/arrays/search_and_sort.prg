* ascan under SET EXACT, asort of mixed values and by a column, stable.
a = array("b", "abc", 2, 2.0, $2, .T., {^2024-01-02}, "ab")
SET EXACT OFF
? "exact off:", ascan(a, "ab"), ascan(a, "abc"), ascan(a, "abcd")
SET EXACT ON
? "exact on:", ascan(a, "ab"), ascan(a, "abc"), ascan(a, "ab ")
SET EXACT OFF
? "numbers of any type:", ascan(a, 2), ascan(a, 2, 4), ascan(a, $2, 5), ascan(a, 3)
? "other families never match:", ascan(a, .T.), ascan(a, {^2024-01-02}), ascan(a, {^2024-01-03})
? "empty text:", ascan(a, ""), ascan(a, "", 3)
? "from the last element:", ascan(a, "ab", 8)

* Mixed values sort by family: logicals, numbers, dates, texts.
m = array("pear", 10, .T., {^2020-05-01}, "Apple", 7, .F., "apple", 3)
asort(m)
show(@m)
asort(m, -1)
show(@m)
* Sorting from element 4 leaves the first three alone.
m = array(5, 4, 3, 2, 1)
asort(m, 4)
show(@m)

* Rows move together; equal keys keep their order.
DIMENSION g(5, 2)
g[1, 1] = "k2"
g[1, 2] = 1
g[2, 1] = "k1"
g[2, 2] = 2
g[3, 1] = "k2"
g[3, 2] = 3
g[4, 1] = "k1"
g[4, 2] = 4
g[5, 1] = "k0"
g[5, 2] = 5
asort(g, 1)
rows(@g)
asort(g, -1)
rows(@g)
* Element 4 is row 2, column 2: rows 2 to 5 sort by column 2, descending.
asort(g, -4)
rows(@g)
* The sorted array is the caller's; a copy taken before keeps its order.
h = g
asort(g, 2)
rows(@g)
rows(@h)

PROCEDURE show(x)
LOCAL i
FOR i = 1 TO alen(x)
  IF vartype(x[i]) $ "CN"
    ?? x[i], ""
  ELSE
    ?? vartype(x[i]) + iif(vartype(x[i]) = "L", iif(x[i], "T", "F"), ""), ""
  ENDIF
NEXT
?

PROCEDURE rows(x)
LOCAL i
FOR i = 1 TO alen(x, 1)
  ?? x[i, 1] + ":", x[i, 2], ""
NEXT
?
