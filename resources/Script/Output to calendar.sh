#!/bin/sh -c
# Inserts a calendar of the current month at the insertion point.
if command -v ncal >/dev/null 2>&1; then
    ncal -b -h
elif command -v cal >/dev/null 2>&1; then
    cal
else
    # No calendar program: draw the month with date and awk.
    year=$(date +%Y)
    month=$(date +%m)
    first=$(date -d "$year-$month-01" +%w)
    days=$(date -d "$year-$month-01 +1 month -1 day" +%d)
    date -d "$year-$month-01" '+      %B %Y'
    echo "Su Mo Tu We Th Fr Sa"
    awk -v first="$first" -v days="$days" 'BEGIN {
        line = ""
        for (i = 0; i < first; i++) line = line "   "
        for (d = 1; d <= days; d++) {
            line = line sprintf("%2d", d)
            if ((d + first) % 7 == 0) { print line; line = "" } else line = line " "
        }
        if (line != "") print line
    }'
fi
