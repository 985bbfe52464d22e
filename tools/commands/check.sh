# shellcheck shell=bash
# check [--all]  formatting and static analysis of what has changed since it was last found clean; of
#                everything with --all, and in continuous integration (CI=true)
tools/check.sh "$@"
