* Output buffering over the screen: capture, flush, discard, no nesting.
? "no buffer yet:", ob_end_flush(), ob_end_clean(), "[" + ob_get_content() + "]"
? "start:", ob_start()
? "first line"
?? "no line end"
captured = ob_get_content()
? "a second start keeps the buffer:", ob_start()
? "second line"
RUN echo run output is captured too
* Error output is never buffered: it appears at once.
exec("sh -c 'echo error output >&2'")
all = ob_get_content()
? "clean:", ob_end_clean()
? "the buffer had:", len(captured), "characters"
? captured
? "then:"
?? all
? "flush:", ob_start()
? "written when flushed"
? "ended:", ob_end_flush(), "[" + ob_get_content() + "]"
* A buffer started in a function outlives it.
= buffered()
inner = ob_get_content()
ob_end_clean()
? "from the function:", inner

FUNCTION buffered
ob_start()
?? "inside"
RETURN .T.
