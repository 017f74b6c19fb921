* IF / ELSE / ENDIF, IF ... THEN, nested IFs and DO CASE.
x = 5
IF x > 3
  ? "big"
ELSE
  ? "small"
ENDIF
IF x = 5 THEN
  ? "then form"
ENDIF
IF x < 0
  ? "never"
ENDIF anything after ENDIF is ignored
IF x > 1
  IF x > 10
    ? "huge"
  ELSE
    ? "medium"
  ENDIF
ENDIF
IF .NULL.
  ? "null is not true"
ELSE
  ? "null takes the else branch"
ENDIF
FOR n = 1 TO 4
  DO CASE
  CASE n = 1
    ? n, "one"
  CASE n = 2 OR n = 3
    ? n, "two or three"
  OTHERWISE
    ? n, "other"
  ENDCASE
NEXT
DO CASE
CASE .F.
  ? "no"
ENDCASE
? "no case taken, no otherwise"
