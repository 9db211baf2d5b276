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
# wait_for TRIES PID COMMAND...: runs COMMAND every tenth of a second until it succeeds; fails after
# TRIES tries, or at once when process PID has ended.
wait_for() {
  tries=$1 pid=$2
  shift 2
  until "$@"; do
    tries=$((tries - 1))
    { [ $tries -le 0 ] || ! kill -0 "$pid" 2>/dev/null; } && return 1
    sleep 0.1
  done
}
has_window() { xwininfo -root -tree 2>/dev/null | grep -qF "\"$title\""; }
export XDG_CONFIG_HOME="$dir/config" XDG_DATA_HOME="$dir/data" XDG_RUNTIME_DIR="$dir"
unset QT_QPA_PLATFORM WAYLAND_DISPLAY

# No display at all, then a Wayland variable left over from elsewhere with no server behind it:
# both say so and end with status 3.
for wayland in "" gone-away; do
  env -u DISPLAY ${wayland:+WAYLAND_DISPLAY=$wayland} "$translator" "$file" >"$dir/none.out" 2>"$dir/none.err"
  status=$?
  [ "$status" -eq 3 ] && grep -q "no display" "$dir/none.err" ||
    { echo "WAYLAND_DISPLAY='$wayland', no DISPLAY: status $status"; cat "$dir/none.err"; exit 1; }
done

# A real X server. Without -noreset it starts over each time its last client leaves, and a
# client that comes during that moment is refused: the program, right after xwininfo below.
Xvfb -displayfd 3 -noreset -screen 0 1280x800x24 -nolisten tcp 3>"$dir/display" 2>"$dir/xvfb.err" &
xvfb=$!
wait_for 100 "$xvfb" test -s "$dir/display" || { echo "Xvfb did not start"; cat "$dir/xvfb.err"; exit 1; }
DISPLAY=":$(cat "$dir/display")"
export DISPLAY
# The number is written once the server listens, but a loaded machine has been seen to refuse
# the first client: wait until the server answers.
wait_for 100 "$xvfb" xwininfo -root >/dev/null 2>&1 ||
  { echo "Xvfb on $DISPLAY does not answer"; cat "$dir/xvfb.err"; exit 1; }
# Options of the window system's own come before the file, and are not taken for it.
"$translator" -style fusion "$file" >"$dir/app.out" 2>&1 &
app=$!
title="Translator - [$name]"
if ! wait_for 200 "$app" has_window; then
  echo "no window titled \"$title\""
  xwininfo -root -tree 2>/dev/null | grep '"' | head -20
  cat "$dir/app.out" "$dir/xvfb.err"
  exit 1
fi
sleep 2
kill -0 "$app" 2>/dev/null || { echo "the program ended by itself"; cat "$dir/app.out"; exit 1; }
echo "window \"$title\" shown and running"
