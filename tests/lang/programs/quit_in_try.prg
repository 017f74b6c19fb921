* QUIT ends the program even inside TRY: no CATCH sees it.
TRY
    ? "before"
    QUIT
CATCH
    ? "caught"
ENDTRY
? "after"
