#!/bin/sh
# What can be said of the sources without building them: their format, and that every folder and every outside
# library stays in its place. Prints what is wrong; ends with 0 only when nothing is.
set -eu
cd "$(dirname "$0")/.."
status=0

# The format of clang-format 14; other versions differ.
format=$(command -v clang-format-14 || command -v clang-format || true)
if [ -z "$format" ]; then
    echo "clang-format 14 is missing: scripts/setup.sh tests installs it"
    status=1
elif ! find src tests tools bench \( -name '*.h' -o -name '*.cpp' \) -print0 | xargs -0 "$format" --dry-run -Werror; then
    status=1
fi

scripts/check_layers.sh || status=1
exit $status
