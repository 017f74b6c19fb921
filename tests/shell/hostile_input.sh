#!/bin/sh
# Input a hostile user might type or run: each line ends in its numbered
# error (or runs), and the prompt keeps answering afterwards. Errors at the
# prompt show their message; a program's exit status is its error number
# modulo 256 (9013 -> 53, 103 -> 103).
. "$(dirname "$0")/common.inc"

repeat() { # text count: the text count times in a row
  awk -v t="$1" -v n="$2" 'BEGIN { for (i = 0; i < n; i++) printf "%s", t }'
}

# PUBLIC and PARAMETERS at the prompt and from macro text have no frame slot.
printf 'PUBLIC x\nx = 5\n? x\nPARAMETERS a, b\n? a, b\nm = "PUBLIC y"\n&m\n? y\nm = "PARAMETERS z"\n&m\n? z\n? "alive"\n' \
  | "$zosh" >out.txt 2>err.txt
check "PUBLIC at the prompt" 'grep -q "> 5$" out.txt'
check "PARAMETERS at the prompt are false" 'grep -q "> false false$" out.txt'
check "PUBLIC and PARAMETERS from macro text" '[ "$(grep -c "> false$" out.txt)" = 2 ]'
check "no error from declarations" '[ ! -s err.txt ]'
check "the prompt answers after declarations" 'grep -q alive out.txt'

# A macro that names itself, and evaluate() of itself.
printf 'm = "? &m"\n? &m\n? "alive 1"\nm = "evaluate(m)"\n? evaluate(m)\n? "alive 2"\nm = "? 7"\n&m\n' \
  | "$zosh" >out.txt 2>err.txt
check "a self-naming macro is recursive (1206)" 'grep -qx "Recursive macro definition." err.txt'
check "evaluate of itself runs out of levels (103)" \
  'grep -qx "Allowed DO nesting or expression evaluation level exceeded." err.txt'
check "the prompt answers after recursion" 'grep -q "alive 1" out.txt && grep -q "alive 2" out.txt'
check "a plain macro still runs" 'grep -q "> 7$" out.txt'

# Long and deep expressions: 2,000 terms run; 5,000 terms nest deeper than
# the compiler goes, 10,001 operators are more than a line may hold, and
# 1,000 unary operators or 5,000 parentheses more than the parser holds:
# each of those is 9013.
{
  printf '? 1'; repeat '+1' 1999; echo
  printf '? 1'; repeat '+1' 4999; echo
  printf '? 1'; repeat '+1' 10001; echo
  printf '? '; repeat '!' 1000; echo '.t.'
  printf '? '; repeat '(' 5000; printf 1; repeat ')' 5000; echo
  echo '? "alive"'
} | "$zosh" >out.txt 2>err.txt
check "2,000 terms add up" 'grep -q "> 2000$" out.txt'
check "each deep line is 9013" '[ "$(grep -cx "Parser stack exhausted." err.txt)" = 4 ]'
check "the prompt answers after deep expressions" 'grep -q alive out.txt'

# Nested blocks past 1,000 levels, run as programs from the prompt.
nest() { # opener closer count
  awk -v o="$1" -v c="$2" -v n="$3" 'BEGIN {
    for (i = 0; i < n; i++) print o
    print "? \"deep\""
    for (i = 0; i < n; i++) print c }'
}
nest 'IF .t.' 'ENDIF' 1000 >ifs_ok.prg
nest 'IF .t.' 'ENDIF' 1001 >ifs.prg
nest 'TRY' 'ENDTRY' 60000 >trys.prg
nest 'DO WHILE .t.' 'ENDDO' 130000 >loops.prg
"$zosh" ifs_ok.prg >out.txt 2>&1
check "1,000 nested IFs run" '[ $? = 0 ] && grep -qx deep out.txt'
for prg in ifs trys loops; do
  "$zosh" $prg.prg >out.txt 2>&1
  status=$?
  check "$prg.prg ends in 9013" '[ "$status" = 53 ] && grep -q "9013 - Parser stack exhausted." out.txt'
done
printf 'DO ifs.prg\nDO trys.prg\n? "alive"\n' | "$zosh" >out.txt 2>err.txt
check "the prompt answers after deep programs" \
  '[ "$(grep -cx "Parser stack exhausted." err.txt)" = 2 ] && grep -q alive out.txt'
exit $failed
