#!/bin/sh
# Builds Zemora where that is needed and mounts a pair: scripts/mount.sh LEFT RIGHT [options]
# Without arguments it generates an example pair in build/example and mounts that.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/setup.sh"

build() {
    (cd "$top" && { [ -f build/release/build.ninja ] || cmake --preset release; } && cmake --build --preset release --target "$@") >"$top/build/mount.log" 2>&1 ||
        { tail -n 30 "$top/build/mount.log"; exit 1; }
}
mkdir -p "$top/build"
echo "Building (build/mount.log) ..."
build zemora zemora_scene

if [ $# -eq 0 ]; then
    example=$top/build/example
    mkdir -p "$example"
    "$top/build/release/tools/zemora_scene" "$example/garden_l.jpg" "$example/garden_r.jpg" 2400 1600 \
        height=18 size=0.8 rotation=0.9 vergence_v=0.4 vergence_h=0.3 brightness=0.92 noise=2
    set -- "$example/garden_l.jpg" "$example/garden_r.jpg"
fi
exec "$top/build/release/zemora" "$@"
