#!/bin/bash
# Writes docs/console-help.md: the console program's own help, word for word. A test compares the two.
#   tools/make_console_help.sh [PROGRAM]     default: the native build's
set -euo pipefail
cd "$(dirname "$0")/.."
program=${1:-build/native/bin/skyvault-cli}
{
    echo "# The console's help in full"
    echo
    echo "What \`skyvault-cli --help\` and \`skyvault-cli COMMAND --help\` print; [the manual](console.md) explains it."
    for command in "" convert generate batch info; do
        printf '\n## skyvault-cli %s\n\n```text\n' "${command:+$command }--help"
        "$program" $command --help
        printf '```\n'
    done
} >docs/console-help.md
