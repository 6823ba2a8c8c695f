#!/bin/sh
# Sets up, builds and tests everything: the release build and, with "asan", the sanitizer build too.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh tests
run() { # preset
    cmake --preset "$1"
    cmake --build --preset "$1"
    ctest --preset "$1"
}
run release
if [ "${1:-}" = asan ]; then
    run asan
fi
