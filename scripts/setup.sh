#!/bin/sh
# Installs what is missing of scripts/packages.txt and, with "tests", of scripts/packages_test.txt.
set -eu
cd "$(dirname "$0")"

lists=packages.txt
[ "${1:-}" = tests ] && lists="$lists packages_test.txt"

missing=
# shellcheck disable=SC2086
for package in $(grep -hv '^#' $lists); do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
done
[ -z "$missing" ] && exit 0

echo "Installing:$missing"
as_root=
[ "$(id -u)" = 0 ] || as_root=sudo
$as_root apt-get update -q
# shellcheck disable=SC2086
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing
