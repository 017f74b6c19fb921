* A field that does not parse is reported at the field.
SET TEXTMERGE ON
\\x <<1 +>>
