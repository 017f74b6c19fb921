* exec, system and RUN: output, errors, status and input.
status = -1
errors = "unset"
out = exec("sh -c 'echo to out; echo to err >&2; exit 3'", @status, @errors)
? "a failing program:", out == "to out" + chr(10), status, errors == "to err" + chr(10)
out = exec("true", @status, @errors)
? "a quiet one:", out == "", status, errors == ""
? "arguments as parseargs splits them:", exec([printf '<%s>' one "two words" three\ four])
? "input:", exec("tr a-z A-Z", @status, @errors, "fed to it"), status
? "input larger than a pipe holds:", len(exec("cat", @status, @errors, replicate("x", 300000))), status
? "system runs a shell:", system("echo $((6 * 7)) | tr -d '\n'", @status), status
? "system with input:", system("wc -c | tr -d ' \n'", @status, "12345"), status
? "system's failure:", system("exit 5", @status) == "", status
* Without @errors the error output reaches the screen.
? "errors shown:", exec("sh -c 'echo shown >&2'")
? "a signal:", exec("sh -c 'kill -TERM $$'", @status), status
? "missing program:", fails("exec('no-such-program-zobase')"), fails("exec('')"), fails("exec([unclosed 'quote])")
RUN echo run writes through the screen
RUN exit 3
* What escapearg quotes, parseargs and the shell read back unchanged.
words = array(1)
tricky = [it's a "test" $HOME \ back]
? "escapearg:", escapearg("plain-name_1.txt"), escapearg("two words"), escapearg(""), escapearg("it's")
? "parseargs:", parseargs("cmd " + escapearg(tricky) + " x", words), words[2] == tricky, words[3]
? "shell reads it back:", system("printf %s " + escapearg(tricky)) == tricky
? "exec reads it back:", exec("printf %s " + escapearg(tricky)) == tricky
? "quotes and escapes:", parseargs([a"b"'c'd "e\"f" 'g\h' i\ j  ], words), words[1], words[2], words[3], words[4]
? "empty line:", parseargs("   ", words), alen(words)

FUNCTION fails(expression)
TRY
  = evaluate(expression)
CATCH TO e
  RETURN e.errorno
ENDTRY
RETURN 0
