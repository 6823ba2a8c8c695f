#!/bin/sh
# Installs what is missing of scripts/packages.txt.
set -eu
here=$(cd "$(dirname "$0")" && pwd)

missing=
for package in $(grep -v '^#' "$here/packages.txt"); do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
done
[ -z "$missing" ] && exit 0

echo "Installing:$missing"
as_root=
[ "$(id -u)" = 0 ] || as_root=sudo
$as_root apt-get update -q
# shellcheck disable=SC2086
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing
