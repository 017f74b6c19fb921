* SET SYSFORMATS ON takes the machine's formats (here a German locale):
* decimal comma, point as separator, the medium date form, Monday first.
d = {^2026-01-02}
? set("SYSFORMATS"), set("POINT"), set("SEPARATOR"), set("DATE"), set("FDOW"), dtoc(d), 1.5
SET SYSFORMATS OFF
? "OFF changes nothing:", set("SYSFORMATS"), set("POINT"), set("DATE")
SET SYSFORMATS ON
? set("SYSFORMATS"), set("POINT"), set("SEPARATOR"), set("DATE"), set("FDOW"), set("DECIMALS"), set("CENTURY"), set("HOURS")
? dtoc(d), ttoc({^2026-01-02 13:14:15}), 1.5, val("1.234,5"), transform(1234567, "9,999,999"), dow(d, 0), cdow(d), cmonth(d)
* Any setting changed afterwards makes the formats the session's own again.
SET CENTURY ON
? set("SYSFORMATS"), dtoc(d)
SET CENTURY OFF
? set("SYSFORMATS")
SET FDOW TO 1
? set("SYSFORMATS")
