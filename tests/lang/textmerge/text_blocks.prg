* TEXT ... ENDTEXT and the \ and \\ lines.
name = "world"
TEXT TO plain NOSHOW
Hello <<name>>
second line
ENDTEXT
? plain
TEXT TO merged TEXTMERGE NOSHOW
Hello <<name>>, <<6 * 7>>, empty field:[<<>>]
ENDTEXT
? merged
TEXT TO merged TEXTMERGE NOSHOW ADDITIVE
 and more
ENDTEXT
? merged
TEXT
shown directly
ENDTEXT
\off: <<name>>
SET TEXTMERGE ON
\on: <<name>>
\\no line end,
\\ joined
\
SET TEXTMERGE TO MEMVAR collected
SET TEXTMERGE NOSHOW
\first <<1 + 1>>
\\second
SET TEXTMERGE OFF
? "collected:", collected
