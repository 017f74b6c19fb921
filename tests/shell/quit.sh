#!/bin/sh
# QUIT ends the prompt loop, and a program, quietly with status 0.
. "$(dirname "$0")/common.inc"

printf '? "before"\nQUIT\n? "not reached"\n' | "$zosh" >out.txt 2>err.txt
status=$?
check "QUIT at the prompt ends with status 0" '[ "$status" = 0 ]'
check "QUIT at the prompt stops reading" 'grep -q before out.txt && ! grep -q "not reached" out.txt'
check "QUIT at the prompt reports nothing" '[ ! -s err.txt ]'

printf 'QUIT\n? "after quit"\n' >quits.prg
"$zosh" quits.prg >out.txt 2>&1
status=$?
check "QUIT in a program ends with 0" '[ "$status" = 0 ] && ! grep -q "after quit" out.txt'
exit $failed
