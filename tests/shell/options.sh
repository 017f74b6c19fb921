#!/bin/sh
# Every option's effect and the exit status it leaves.
. "$(dirname "$0")/common.inc"

"$zosh" --help >out.txt 2>&1
status=$?
check "--help succeeds" '[ "$status" = 0 ]'
for option in "--interactive" "--assert" "--codepage <kestro codepage>" "--cstdout <zo charset name>" \
              "--cstdin <zo charset name>" "--sysinfo" "<argument>"; do
  check "--help lists $option" 'grep -qF -- "$option" out.txt'
done
check "--help shows the help texts" 'grep -q "Script-Name and Arguments." out.txt'

"$zosh" --version >out.txt 2>&1
status=$?
check "--version succeeds" '[ "$status" = 0 ]'
check "--version prints the version" 'grep -qF "0.9.2700 (x86_64)" out.txt'

# Unknown words are script arguments to TCLAP; a value option without its value is not.
"$zosh" --codepage >out.txt 2>&1
status=$?
check "a bad command line fails with status 1" '[ "$status" = 1 ]'
check "a bad command line gives the parse report" 'grep -q "PARSE ERROR:" out.txt'

printf '? "ran"\n' >prog.prg
"$zosh" --codepage 1252 prog.prg >out.txt 2>&1
status=$?
check "--codepage by number is accepted" '[ "$status" = 0 ] && grep -qx ran out.txt'
"$zosh" --codepage windows-1250 prog.prg >out.txt 2>&1
check "--codepage by name is accepted" '[ $? = 0 ] && grep -qx ran out.txt'
"$zosh" --codepage cp-bogus prog.prg >out.txt 2>&1
status=$?
check "an unknown code page fails with status 1" '[ "$status" = 1 ]'
check "an unknown code page is reported" 'grep -q -- "--codepage not supported" out.txt'
check "an unknown code page runs nothing" '! grep -qx ran out.txt'

"$zosh" --sysinfo prog.prg >out.txt 2>&1
status=$?
check "--sysinfo succeeds" '[ "$status" = 0 ]'
check "--sysinfo prints the report" 'grep -qx "VERSION: 0.9.2700" out.txt && grep -qx "ARCH: x86_64" out.txt'
check "--sysinfo does not run the script" '! grep -qx ran out.txt'

# A BOM makes the source UTF-8 whatever the machine's code page.
printf '\357\273\277? "caf\303\251"\n' >accent.prg
"$zosh" --cstdout windows-1252 accent.prg >out.txt 2>&1
check "--cstdout converts redirected output" '[ "$(od -An -tx1 out.txt | tr -d " \n")" = "636166e90a" ]'
"$zosh" accent.prg >out.txt 2>&1
check "redirected output is UTF-8 by default" '[ "$(od -An -tx1 out.txt | tr -d " \n")" = "636166c3a90a" ]'

printf '? "a"\n? no_such_variable\n? "b"\n' >fails.prg
"$zosh" fails.prg >out.txt 2>err.txt
status=$?
check "a failing program's status is its error number" '[ "$status" = 12 ]'
check "a failing program stops at the error" 'grep -qx a out.txt && ! grep -qx b out.txt'

printf 'PARAMETERS argc, argv\n? argc\n? argv[1]\n? argv[3]\n' >args.prg
"$zosh" args.prg one "two words" >out.txt 2>&1
status=$?
check "script arguments reach argc and argv" '[ "$status" = 0 ] && [ "$(cat out.txt)" = "$(printf "3\nargs.prg\ntwo words")" ]'

"$zosh" missing.prg >out.txt 2>err.txt
status=$?
check "a missing program is error 1" '[ "$status" = 1 ] && grep -qF "File '"'"'missing.prg'"'"' does not exist." err.txt'

printf 'ASSERT .F.\n? "after assert"\n' >asserts.prg
"$zosh" asserts.prg </dev/null >out.txt 2>&1
status=$?
check "ASSERT lines are ignored by default" '[ "$status" = 0 ] && grep -qx "after assert" out.txt'
"$zosh" --assert asserts.prg </dev/null >out.txt 2>&1
status=$?
check "--assert makes a failing ASSERT end the run; the OS keeps 1098's low byte" '[ "$status" = 74 ]'

# --cstdin names no charset itself: it applies the --cstdout one to the input.
printf '? "caf\351"\n' | "$zosh" --cstdout windows-1252 --cstdin ignored >out.txt 2>&1
check "--cstdin reads input in the --cstdout charset" 'od -An -tx1 out.txt | tr -d " \n" | grep -q "636166e90a"'
printf '? "caf\351"\n' | "$zosh" --cstdout windows-1252 >out.txt 2>&1
check "without --cstdin input stays UTF-8" '! od -An -tx1 out.txt | tr -d " \n" | grep -q "636166e90a"'
exit $failed
