#!/bin/sh
# The window program as a user starts it: under a real X server (Xvfb) `translator FILE` shows a
# main window titled with the file's name and keeps running; without any display it says so and
# ends with status 3, without a crash.
#   start_window.sh PATH_TO_TRANSLATOR QUESTIONNAIRE
set -u
translator=$1
file=$2
name=$(basename "$file")
dir=$(mktemp -d)
app=""
xvfb=""
cleanup() {
  [ -n "$app" ] && kill "$app" 2>/dev/null
  [ -n "$xvfb" ] && kill "$xvfb" 2>/dev/null
  rm -rf "$dir"
}
trap cleanup EXIT
export XDG_CONFIG_HOME="$dir/config" XDG_DATA_HOME="$dir/data" XDG_RUNTIME_DIR="$dir"
unset QT_QPA_PLATFORM WAYLAND_DISPLAY

# No display at all.
env -u DISPLAY "$translator" "$file" >"$dir/none.out" 2>"$dir/none.err"
status=$?
[ "$status" -eq 3 ] || { echo "without a display: status $status, not 3"; cat "$dir/none.err"; exit 1; }
grep -q "no display" "$dir/none.err" || { echo "without a display: no message"; cat "$dir/none.err"; exit 1; }
# A Wayland variable left over from elsewhere, with no server behind it, is no display either.
env -u DISPLAY WAYLAND_DISPLAY=gone-away "$translator" "$file" >"$dir/stale.out" 2>"$dir/stale.err"
status=$?
[ "$status" -eq 3 ] || { echo "with a stale Wayland variable: status $status, not 3"; cat "$dir/stale.err"; exit 1; }

# A real X server.
Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$dir/display" 2>"$dir/xvfb.err" &
xvfb=$!
i=0
while [ ! -s "$dir/display" ] && [ $i -lt 100 ]; do sleep 0.1; i=$((i + 1)); done
[ -s "$dir/display" ] || { echo "Xvfb did not start"; cat "$dir/xvfb.err"; exit 1; }
DISPLAY=":$(cat "$dir/display")"
export DISPLAY
# The number is written once the server listens, but a loaded machine has been seen to refuse
# the first client: wait until the server answers.
i=0
until xwininfo -root >/dev/null 2>&1; do
  i=$((i + 1))
  if [ $i -ge 100 ] || ! kill -0 "$xvfb" 2>/dev/null; then
    echo "Xvfb on $DISPLAY does not answer"
    cat "$dir/xvfb.err"
    exit 1
  fi
  sleep 0.1
done
# Options of the window system's own come before the file, and are not taken for it.
"$translator" -style fusion "$file" >"$dir/app.out" 2>&1 &
app=$!
title="Translator - [$name]"
i=0
while ! xwininfo -root -tree 2>/dev/null | grep -qF "\"$title\""; do
  i=$((i + 1))
  if [ $i -ge 200 ] || ! kill -0 "$app" 2>/dev/null; then
    echo "no window titled \"$title\""
    xwininfo -root -tree 2>/dev/null | grep '"' | head -20
    cat "$dir/app.out" "$dir/xvfb.err"
    exit 1
  fi
  sleep 0.1
done
sleep 2
kill -0 "$app" 2>/dev/null || { echo "the program ended by itself"; cat "$dir/app.out"; exit 1; }
echo "window \"$title\" shown and running"
