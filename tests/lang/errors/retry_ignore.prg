* Ignore goes on with the next statement; Retry runs the failing statement
* again, so its error is reported a second time.
? "before"
? undefined_name
? "after ignore"
? "retrying:", undefined_name
? "after retry and ignore"
