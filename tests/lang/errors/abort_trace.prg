* An unhandled error three frames deep: the dialog is answered with Abort,
* the trace counts the frames down to 1, and the error's number ends the run.
? "start"
= level1()
? "not reached"

FUNCTION level1
RETURN level2()

FUNCTION level2
RETURN missing_variable + 1
