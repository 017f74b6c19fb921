* AND and OR with the null merge; $ follows at().
? iif(isnull(.NULL. OR .F.), "null", "not null")
? iif(.NULL. OR .T., "true", "false")
? iif(.F. AND never_defined, "true", "false")
? iif("b" $ "abc", "in", "out"), iif("z" $ "abc", "in", "out")
? iif(1 < 2, "yes", "no")
