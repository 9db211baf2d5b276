#!/bin/sh
# The manual page formats without a single warning and names itself for the whatis database.
#   check_man_page.sh PAGE
set -u
page=$1
warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null)
[ -z "$warnings" ] || { echo "man warns about $page:"; echo "$warnings"; exit 1; }
name=$(lexgrog "$page") || { echo "lexgrog finds no NAME section in $page"; exit 1; }
echo "$name" | grep -q 'translator - ' || { echo "unexpected NAME line: $name"; exit 1; }
