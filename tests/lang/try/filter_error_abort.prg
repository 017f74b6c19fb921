* An error in a CATCH filter answered with Abort ends the run with the
* filter's error, after the trace through the filter's frame.
TRY
  THROW "boom"
CATCH TO e WHEN e.uservalue > 1
  ? "never"
ENDTRY
? "not reached"
