#!/bin/sh
# The translators' round trip on the example questionnaire, as a script on a server would run it:
# export the captions that still lack a translation, let a "translator" fill the German column,
# import the file back accepting only rows whose English source has not changed (rows whose
# source changed would go to UnusedStrings.txt), and show what the questionnaire now holds.
#   examples/round-trip.sh BUILD_DIR
set -eu
build=${1:-build}
translator="$build/src/main/translator"
pseudo="$build/bench/pseudo_translate"
work="$build/round-trip"
rm -rf "$work"
mkdir -p "$work"
cp examples/customer-satisfaction.qes "$work/survey.qes"

result() { tail -n 1 | sed 's/^result=//'; }

echo "1. Export the captions that are not yet translated in every language"
code=$("$translator" "$work/survey.qes" "export:$work/to-translate.txt" excludetranslated | tee /dev/stderr | result)
echo "   result $code (an export always ends with -20: the file tells)"
echo "   $(wc -c < "$work/to-translate.txt") bytes of UTF-16 text in $work/to-translate.txt"

echo "2. A translator fills the empty German cells (a visible pseudo-translation)"
"$pseudo" "$work/to-translate.txt" 1031

echo "3. Import, accepting only rows whose English source is unchanged"
code=$("$translator" "$work/survey.qes" "translate:$work/to-translate.txt" importunchanged reference:ENU | tee /dev/stderr | result)
echo "   result $code: captions written into $work/survey.qes"

echo "4. The German column now"
"$translator" "$work/survey.qes" listcaptions > "$work/after.txt"
cut -f 1,2,3,6 "$work/after.txt" | head -n 20
echo "   ..."
echo "Files are in $work."
