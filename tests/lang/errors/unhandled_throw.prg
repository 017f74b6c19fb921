* THROW with no TRY around it is error 2059; end of input at the dialog aborts.
? "throwing"
THROW "nobody catches this"
? "not reached"
