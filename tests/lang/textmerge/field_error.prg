* An error in a text-merge field is reported at the field's own place, in a
* \ line and in a TEXT block.
SET TEXTMERGE ON
name = "x"
\good <<name>>, bad <<nosuch>>
TEXT TEXTMERGE NOSHOW TO result
first line <<name>>
  second <<1 + undefined_too>>
ENDTEXT
? "end"
