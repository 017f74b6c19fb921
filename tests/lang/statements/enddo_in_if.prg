* ENDDO inside an IF whose loop is outside it: the IF and the loop both report.
DO WHILE .T.
  IF .T.
  ENDDO
