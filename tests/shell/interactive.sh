#!/bin/sh
# The prompt loop: a command, an empty line, an error that leaves the prompt
# standing, and end of input ending the loop.
. "$(dirname "$0")/common.inc"

printf '? 1 + 2\n\n? no_such_variable\n? "after"\n' | "$zosh" >out.txt 2>err.txt
status=$?
check "end of input ends with status 0" '[ "$status" = 0 ]'
check "prompt shows the directory" 'grep -qF "zo $work> " out.txt'
check "the command ran" 'grep -qx "zo $work> 3" out.txt'
check "an error is reported" 'grep -qx "Variable .no_such_variable. is not found." err.txt'
check "the prompt comes back after an error" 'grep -q "after" out.txt'
check "an empty line prompts again" '[ "$(grep -o "zo $work> " out.txt | wc -l)" = 5 ]'
check "the banner names the version" 'grep -q "0.9.2700 (x86_64)" out.txt'
check "redirected input gets no line editing" '! grep -q "$(printf "\033")" out.txt'

printf '? "last"\n' | "$zosh" >out.txt 2>err.txt
status=$?
check "end of input returns 0" '[ "$status" = 0 ]'
check "the last line ran" 'grep -q "last" out.txt'

"$zosh" </dev/null >out.txt 2>err.txt
check "closed input at once returns 0" '[ $? = 0 ]'
exit $failed
