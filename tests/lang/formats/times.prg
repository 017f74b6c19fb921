* Datetimes as text: 12 and 24 hours, with and without seconds, the fixed
* forms of ttoc, and the parts of dates and times.
t = {^2026-01-02 15:04:05}
m = {^2026-01-02 00:30:00}
? ttoc(t), "|", ttoc(m)
SET SECONDS OFF
? ttoc(t), "|", ttoc(m), "|", set("SECONDS")
SET HOURS TO 24
? ttoc(t), "|", ttoc(m), "|", set("HOURS")
SET SECONDS ON
? ttoc(t), "|", ttoc(m)
SET CENTURY ON
? t
SET DATE TO GERMAN
? t, "|", ttoc({^2026-12-31 23:59:59})
SET DATE TO AMERICAN
? "after AMERICAN:", set("HOURS"), ttoc(t)

* The fixed forms ignore every setting.
SET DATE TO ITALIAN
? ttoc(t, 1), ttoc(t, 3)
TRY
  ? ttoc(t, 2)
CATCH TO e
  ? "ttoc(t, 2):", e.errorno
ENDTRY
SET DATE TO AMERICAN
SET CENTURY OFF
? "[" + ttoc(dtot({})) + "]", "[" + ttoc(dtot({}), 3) + "]", ttoc(.NULL.)

* Building dates and datetimes.
? date(2026, 1, 2), datetime(2026, 1, 2), datetime(2026, 1, 2, 13), datetime(2026, 1, 2, 13, 14, 15)
? date(2024, 2, 31), date(.NULL., 1, 1), datetime(2026, .NULL., 1)
try_eval("date(2026, 0, 1)")
try_eval("date(0, 1, 1)")
try_eval("datetime(2026, 1, 1, 24)")
try_eval("datetime(2026, 1, 1, 1, 60)")
try_eval("date(2026, 1)")
try_eval("date(2026, -1, 1)")
? vartype(date()), vartype(datetime()), date() = ttod(datetime()), len(time()), len(time(1)), seconds() >= 0

* Parts, conversions and day numbers.
? day(t), month(t), year(t), hour(t), minute(t), sec(t)
? day({}), month({}), year({}), hour(dtot({})), sec(dtot({})), julian({}), dow({})
? day(.NULL.), hour(.NULL.), sec(.NULL.), dtot(.NULL.), ttod(.NULL.)
? dtot({^2026-01-02}), ttod(t), julian({^1970-01-01}), julian({^2026-01-02}) - julian({^2025-12-31})

* Weekdays: Sunday is 1 unless told otherwise; 0 takes SET FDOW.
s = {^2026-01-04}
? dow(s), dow(s + 1), dow(s, 2), dow(s + 1, 2), dow(s, 7), dow(s, 0)
SET FDOW TO 2
? set("FDOW"), dow(s, 0), dow(s + 1, 0), dow(s)
try_eval("dow(s, 8)")
try_eval("dow(s, -1)")
TRY
  SET FDOW TO 0
CATCH TO e
  ? "SET FDOW TO 0:", e.errorno, set("FDOW")
ENDTRY
TRY
  SET HOURS TO 13
CATCH TO e
  ? "SET HOURS TO 13:", e.errorno, set("HOURS")
ENDTRY

* Names of weekdays and months in the machine's language.
? cdow(s), cdow(s + 6), cmonth(s), cmonth({^2026-12-24}), "[" + cdow({}) + "]", "[" + cdow(.NULL.) + "]", cmonth(.NULL.)

* Mail and HTTP dates read the datetime as local time.
? mime.ttoc(t), "[" + mime.ttoc(dtot({})) + "]"

PROCEDURE try_eval(text)
  TRY
    ? text, "gave", evaluate(text)
  CATCH TO e
    ? text, "is error", e.errorno
  ENDTRY
