#!/bin/sh
# The machine's charset follows the locale: UTF-8 when its codeset is UTF-8,
# else the look-up by language and country. Source files without a byte
# order mark are read in it; a mark names the charset itself.
. "$(dirname "$0")/common.inc"

printf '? "\303\244bc", len("\303\244bc")\n' >plain.prg
printf '\357\273\277? "\303\244bc", len("\303\244bc")\n' >marked.prg

LC_ALL=C.UTF-8 "$zosh" --sysinfo >out.txt 2>&1
check "a UTF-8 locale makes the machine charset UTF-8" 'grep -qx "CODEPAGE: utf-8" out.txt'
LC_ALL=C.UTF-8 "$zosh" plain.prg >out.txt 2>&1
check "a UTF-8 source without a mark is read as UTF-8" 'grep -qx "$(printf "\303\244bc 3")" out.txt'

LC_ALL=C "$zosh" --sysinfo >out.txt 2>&1
check "another codeset looks the charset up by language and country" 'grep -qx "CODEPAGE: windows-1252" out.txt'
LC_ALL=C "$zosh" plain.prg >out.txt 2>&1
check "then a source without a mark is read in that charset" 'grep -qx "$(printf "\303\203\302\244bc 4")" out.txt'
LC_ALL=C "$zosh" marked.prg >out.txt 2>&1
check "a byte order mark names the charset whatever the locale" 'grep -qx "$(printf "\303\244bc 3")" out.txt'
exit $failed
