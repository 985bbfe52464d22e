#!/bin/bash
# constructors.sh NM ARCHIVE - of the static library's objects, only two need code that runs before main:
# those with the module states and with the application object.
set -eu -o pipefail
found=$("$1" -A "$2" 2> /dev/null | grep -E ' _?_GLOBAL__(sub_)?I' | cut -d: -f2 | sort -u)
expected='StaticModule.cpp.obj
TarnApp.cpp.obj'
[ "$found" = "$expected" ] && exit
printf 'expected:\n%s\nfound:\n%s\n' "$expected" "$found"
exit 1
