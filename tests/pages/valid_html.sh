#!/bin/sh
# All pages through tidy: valid_html.sh PROGRAM_THAT_WRITES_THE_PAGES
# Told are only the attributes of look that the report's tables and rules keep, and the bare "&" between the
# values of the calculator's address, which HTML5 allows in front of names that are no characters.
set -eu
command -v tidy >/dev/null || { echo "tidy is missing: scripts/setup.sh tests"; exit 1; }
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$1" "$folder" >/dev/null

allowed='Warning: <table> attribute "(border|cellspacing)" not allowed for HTML5$
Warning: <hr> attribute "(align|width)" not allowed for HTML5$
Warning: unescaped & or unknown entity "&(dev|wi|hei|pr)"$'
status=0
for page in comfortcalculator_en comfortcalculator_de zemora_report en/zemora_report de/zemora_report \
    en/zemora_deepvideoanalysis de/zemora_deepvideoanalysis; do
    tidy -errors -quiet -latin1 --show-warnings yes "$folder/$page.html" 2>"$folder/told" || [ $? = 1 ] || status=1
    if grep -vE "$allowed" "$folder/told"; then
        echo "in $page.html"
        status=1
    fi
    grep -q '</html>$' "$folder/$page.html" || { echo "$page.html has no end"; status=1; }
done
exit $status
