#!/bin/sh
# man_page_test.sh VERSION PAGE [PROGRAM] - the page formats without a warning, and knows the version and each option of
# its program, whose summary fits a screen.
set -eu
version=$1 page=$2 program=${3:-true}

warnings=$(groff -man -Tutf8 -ww -rLL=100n "$page" 2>&1 >/dev/null)
[ -z "$warnings" ] || { echo "$warnings"; exit 1; }
grep -q "^\.TH .* \"devmgr $version\"" "$page" || { echo "$page: not of version $version"; exit 1; }
help=$("$program" --help 2>&1) || [ $? = 2 ] # 2: the summary is the answer to an unknown option
for option in $(echo "$help" | grep -oE -- '--[a-z-]+' | sort -u); do
    sed 's/\\-/-/g' "$page" | grep -qE "^\.BI? *$option\b" || { echo "$page: $option is missing"; exit 1; }
done
echo "$help" | awk 'length > 80 { print "wider than a screen: " $0; bad = 1 } END { exit bad || NR > 24 }'
