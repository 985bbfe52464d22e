# shellcheck shell=bash
# mutate [FOLDER|FILE]... [--max COUNT] [--first]
#                breaks the library in small ways, one at a time: does a test fail?
python3 -B tools/mutate "$@"
