# shellcheck shell=bash
# check          formatting and static analysis
configure release
tools/check.sh
