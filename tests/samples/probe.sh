# shellcheck shell=bash
# Sourced, after samples/lib.sh: a program that tells what is on the screen (see probe.c). First: make_tool probe
# shellcheck source=tests/samples/tool.sh
. "$(dirname "${BASH_SOURCE[0]}")/tool.sh"

probe() { wine "$out/probe.exe" 2> /dev/null | tr -d '\r'; }
