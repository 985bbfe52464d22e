# shellcheck shell=bash
# Sourced: quoting_example TECHNOLOGY prints the line that docs/tarntool.md shows for it in its table of quoting,
# for the test that runs it.

quoting_example() {
    sed -n "s/^| $1 | \`\([^\`]*\)\`.*|\$/\1/p" "$(dirname "${BASH_SOURCE[0]}")/../../docs/tarntool.md" | grep .
}
