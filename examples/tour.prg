* A short tour of the language. Run it with `make demo`.

* Variables and expressions: integers, decimals, strings, logicals, money, dates.
price = $19.99
quantity = 3
? "Total:", price * quantity
? "Area of a circle of radius 2:", round(pi() * 2 ** 2, 4)
greeting = "Hello" + ", " + "world"
? greeting, "has", len(greeting), "characters"
? "Upper case:", upper(greeting)
due = {^2026-03-01}
? "Due date:", due, "plus 30 days:", due + 30
? "Is 7 between 1 and 10?", between(7, 1, 10)

* Dates and numbers as text follow SET DATE, SET CENTURY, SET POINT and kin.
? "Today is", cdow(date()) + ",", dtoc(date())
SET DATE TO GERMAN
SET CENTURY ON
? "In German style:", due, "and", ttoc({^2026-03-01 14:30:00})
SET DATE TO AMERICAN
SET CENTURY OFF
? "Two thirds:", str(2 / 3, 8, 4), "padded:", transform(42, "@L 99999"), "read back:", val("  12.75 USD") * 2
? "ISO 8601:", ttoc({^2026-03-01 14:30:00}, 3), "day", dow(due), "of the week, in", cmonth(due)

* Functions with parameters, and a recursive one.
? "5! =", factorial(5)
? "Hypotenuse of 3 and 4:", hypotenuse(3, 4)

* IF, DO CASE and loops.
FOR n = 1 TO 15
  DO CASE
  CASE n % 15 = 0
    ?? "FizzBuzz "
  CASE n % 3 = 0
    ?? "Fizz "
  CASE n % 5 = 0
    ?? "Buzz "
  OTHERWISE
    ?? n, ""
  ENDCASE
NEXT
?
count = 0
DO WHILE count < 100
  count = count + 17
ENDDO
? "First multiple of 17 past 100:", count
IF count % 2 = 0
  ? count, "is even"
ELSE
  ? count, "is odd"
ENDIF

* Arrays.
DIMENSION squares(5)
FOR i = 1 TO 5
  squares[i] = i * i
NEXT
sum = 0
FOR i = 1 TO 5
  sum = sum + squares[i]
NEXT
? "Sum of the first five squares:", sum

* Errors are caught with TRY / CATCH, also when raised deep in a call.
TRY
  = divide_checked(1, 0)
CATCH TO problem
  ? "Caught error", problem.errorno, "-", problem.message
FINALLY
  ? "FINALLY runs either way"
ENDTRY
TRY
  THROW "a value of our own"
CATCH TO thrown
  ? "Caught a thrown value:", thrown.uservalue
ENDTRY

* Text merge: fields in << >> are evaluated.
TEXT TO report TEXTMERGE NOSHOW
Order of <<quantity>> items at <<price>> each
comes to <<price * quantity>>.
ENDTEXT
? report

* Tables: a cursor lives in memory; CREATE TABLE would write a DBF file.
CREATE CURSOR orders (item C(12), qty N(4), price Y)
APPEND BLANK
REPLACE item WITH "Pencils"
REPLACE qty WITH 40
REPLACE price WITH $0.35
APPEND BLANK
REPLACE item WITH "Notebooks"
REPLACE qty WITH 6
REPLACE price WITH $2.90
APPEND BLANK
REPLACE item WITH "Stapler"
REPLACE qty WITH 1
REPLACE price WITH $7.50
? "Orders:", reccount()
value = $0
SCAN FOR qty > 1
  ? item, qty, "at", price
  value = value + qty * price
ENDSCAN
? "Value of the larger orders:", value
LOCATE FOR item = "Stapler"
? "Found the stapler in record", recno()
* An index keeps the records in the order of a key, and SEEK finds a key.
INDEX ON UPPER(item) TAG item
SEEK "NOTEBOOKS"
? "Seek by name:", found(), alltrim(item), qty
GO TOP
? "First by name:", item
USE
* Classes: properties with defaults, Init, methods, a subclass that adds to
* its parent's method with DODEFAULT, and a collection of the objects.
shapes = CREATEOBJECT("Collection")
shapes.Add(CREATEOBJECT("Rectangle", 3, 4), "rect")
shapes.Add(CREATEOBJECT("Square", 5), "square")
FOR EACH shape IN shapes
  ? shape.Describe(), "area", shape.Area()
NEXT
? "The square is a", shapes.Item("square").ParentClass

FUNCTION factorial(n)
IF n <= 1
  RETURN 1
ENDIF
RETURN n * factorial(n - 1)

FUNCTION hypotenuse(a, b)
RETURN sqrt(a * a + b * b)

FUNCTION divide_checked(a, b)
IF b = 0
  ERROR "Division by zero is not allowed"
ENDIF
RETURN a / b

DEFINE CLASS Rectangle AS Custom
  nWidth = 0
  nHeight = 0
  PROCEDURE Init(tnWidth, tnHeight)
    This.nWidth = tnWidth
    This.nHeight = tnHeight
  ENDPROC
  FUNCTION Area
    RETURN This.nWidth * This.nHeight
  ENDFUNC
  FUNCTION Describe
    RETURN This.Class
  ENDFUNC
ENDDEFINE

DEFINE CLASS Square AS Rectangle
  PROCEDURE Init(tnSide)
    DODEFAULT(tnSide, tnSide)
  ENDPROC
  FUNCTION Describe
    RETURN "a " + DODEFAULT() + " with equal sides"
  ENDFUNC
ENDDEFINE
