#!/bin/sh
# man_page_test.sh DEVMGR VERSION PAGE - the page formats without a warning, and knows the version and each option; the
# summary of the options fits a screen.
set -eu
devmgr=$1 version=$2 page=$3

warnings=$(groff -man -Tutf8 -ww -rLL=100n "$page" 2>&1 >/dev/null)
[ -z "$warnings" ] || { echo "$warnings"; exit 1; }
grep -q "^\.TH DEVMGR 8 .* \"devmgr $version\"" "$page" || { echo "$page: not of version $version"; exit 1; }
help=$("$devmgr" --help)
for option in $(echo "$help" | grep -oE '^  --[a-z-]+'); do
    sed 's/\\-/-/g' "$page" | grep -qE "^\.BI? *$option\b" || { echo "$page: $option is missing"; exit 1; }
done
echo "$help" | awk 'length > 80 { print "wider than a screen: " $0; bad = 1 } END { exit bad || NR > 24 }'
