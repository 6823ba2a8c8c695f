#!/bin/sh
# The plot files of a film through gnuplot without a screen: plots.sh PROGRAM_THAT_WRITES_THE_PAGES
set -eu
command -v gnuplot >/dev/null || { echo "gnuplot is missing: scripts/setup.sh tests"; exit 1; }
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$1" "$folder" >/dev/null
cd "$folder/en"
unset DISPLAY WAYLAND_DISPLAY GNUTERM
status=0

# plot FILE PICTURE: the picture comes out, nothing is told but that a value is the same in all frames, and nobody
# is asked for a key.
plot() {
    if ! gnuplot "$1.gpl" >told 2>&1 </dev/null || grep -v '^Warning: empty y range' told | grep -q .; then
        echo "$1: $(cat told)"
        status=1
    fi
    if ! head -c 5 "$2.pdf" 2>/dev/null | grep -q '%PDF-' && ! grep -q '</svg>' "$2.svg" 2>/dev/null; then
        echo "$1: no picture of the name $2"
        status=1
    fi
}
plot CorrValues_Geo CorrValue_Geo
plot CorrValues_Window CorrValue_Window
plot CorrValues_Raw CorrValues_raw
for choice in 3 4 5 6 7; do
    rm -f CorrValues_raw.*
    sed "s/^Choice = 2$/Choice = $choice/" CorrValues_Raw.gpl >choice.gpl
    plot choice CorrValues_raw
done
# A gnuplot without PDF writes the other form.
sed "s/' pdf'/' none'/" CorrValues_Geo.gpl >no_pdf.gpl
rm -f CorrValue_Geo.*
plot no_pdf CorrValue_Geo
[ -f CorrValue_Geo.svg ] || { echo "no SVG"; status=1; }
exit $status
