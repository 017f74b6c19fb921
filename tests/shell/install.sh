#!/bin/sh
# make install's layout: zosh in PREFIX/bin finds the library in PREFIX/lib,
# and a script starting with #!/usr/bin/env zosh runs with zosh on the PATH.
# Options after the script's name go to zosh unless "--" comes first.
. "$(dirname "$0")/common.inc"

build=$(dirname "$zosh")
cmake --install "$build" --prefix "$work/prefix" >install.log 2>&1
check "the build installs into a prefix" '[ -x "$work/prefix/bin/zosh" ] && [ -f "$work/prefix/lib/libzobase.so" ]'

printf '#!/usr/bin/env zosh\nPARAMETERS argc, argv\n? argc, argv[argc]\n' >hello.prg
chmod +x hello.prg
PATH="$work/prefix/bin:/usr/bin:/bin" ./hello.prg one >out.txt 2>&1
check "a #! script runs through the installed zosh, its name as argv[1]" 'grep -qx "2 one" out.txt'
PATH="$work/prefix/bin:/usr/bin:/bin" ./hello.prg -- --assert >out.txt 2>&1
check "after -- an option is the script's own argument" 'grep -qx "2 --assert" out.txt'
exit $failed
