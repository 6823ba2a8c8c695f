#!/bin/sh
# Renews the check sums of the golden guard by the release build and prints which of them have changed:
# scripts/renew_golden.sh [EXE SCENE_TOOL] [options of golden.py]
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
if [ -f "${1:-}" ]; then
    exe=$1 scene=$2
    shift 2
else
    exe=$top/build/release/zemora scene=$top/build/release/tools/zemora_scene
fi
exec /usr/bin/python3 "$top/tests/golden/golden.py" "$exe" "$scene" --renew "$@"
