* A ';' at a line's end joins the next line, also with a && comment after
* it and with the next line indented.
nSum = 1 + ;   && first part
   2
? nSum
nSum = 1 + ;
      2 + ;  && two more
      3
? nSum
cText = "a" + ;
        "b"
? cText
IF nSum > 5 ;
   AND cText == "ab"
  ? "joined condition"
ENDIF
? "tab", ;
	"indented"
