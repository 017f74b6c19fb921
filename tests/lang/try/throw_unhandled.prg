* THROW with no TRY around it is error 2059.
? "before"
THROW "nobody catches this"
? "not reached"
