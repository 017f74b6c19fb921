* Every SET DATE style with the century off and on: the order of day, month
* and year, the mark the style sets, and set("DATE") naming it again.
d = {^2026-01-02}
LOCAL styles
DIMENSION styles(14)
styles[1] = "AMERICAN"
styles[2] = "ANSI"
styles[3] = "BRITISH"
styles[4] = "DMY"
styles[5] = "FRENCH"
styles[6] = "GERMAN"
styles[7] = "ITALIAN"
styles[8] = "JAPAN"
styles[9] = "MDY"
styles[10] = "TAIWAN"
styles[11] = "USA"
styles[12] = "YMD"
styles[13] = "SHORT"
styles[14] = "LONG"
FOR EACH style IN styles
  SET DATE TO &style
  SET CENTURY OFF
  ?? padr(set("DATE"), 9), dtoc(d), "|"
  SET CENTURY ON
  ? "", dtoc(d), "|", set("HOURS")
NEXT

* The text of ? and text merge is the session's too.
SET DATE TO BRITISH
SET CENTURY OFF
? d, d + 30
TEXT TO merged TEXTMERGE NOSHOW
due <<d + 1>>
ENDTEXT
? merged

* LONG and SHORT keep the hours of the style before them.
SET DATE GERMAN
SET DATE LONG
? set("DATE"), set("HOURS")
SET DATE USA
SET DATE SHORT
? set("DATE"), set("HOURS")

* Names may be abbreviated where the table allows it, and only there.
SET DATE AMER
? set("DATE")
TRY
  SET DATE YM
CATCH TO e
  ? "SET DATE YM:", e.errorno
ENDTRY
TRY
  SET DATE TO "NOWHERE"
CATCH TO e
  ? "SET DATE NOWHERE:", e.errorno
ENDTRY

* Years of the Republic of China count from 1912.
SET DATE TAIWAN
SET CENTURY ON
? dtoc({^1912-01-01}), dtoc({^1999-12-31}), dtoc({^2026-01-02})
SET CENTURY OFF
? dtoc({^2026-01-02})

* dtoc with a second argument is "yyyymmdd" whatever the settings; an empty
* date keeps the shape of the format; a null date stays null.
? dtoc(d, 1), dtos(d), "[" + dtoc({}) + "]", "[" + dtos({}) + "]", dtoc(.NULL.)
SET DATE AMERICAN
? "[" + dtoc({}) + "]", "[" + dtoc({}, 1) + "]"
* Dates before the Gregorian reform stay Gregorian, as day numbers count them.
SET CENTURY ON
? dtoc({^1000-03-01}), dtos({^1582-10-04}), dtoc({^1582-10-04} + 1)
