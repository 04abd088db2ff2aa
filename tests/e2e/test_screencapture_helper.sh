#!/usr/bin/env bash
# The screen-capture helper on an X server, checked from outside: the whole screen's pixels
# against the pattern put on it, a region dragged out with the pointer, Esc, and a window
# clicked.
source "$(dirname "$0")/lib.sh"
HELPER="$(realpath "$(dirname "$1")")/marigold-screencapture"
cd "$E2E_TMP"
# No session bus, so no portal: the X server is read.
unset DBUS_SESSION_BUS_ADDRESS
start_x

# A pattern with no two columns or rows alike, as the screen's background.
convert -size 1280x860 gradient:red-blue \( -size 1280x860 gradient:black-lime -rotate 90 \
    -resize 1280x860! \) -compose plus -composite -depth 8 pattern.png
# It sets the background and says 1 all the same.
display -window root pattern.png || true
xdotool sleep 0.5

"$HELPER" -m -x screen.png || fail "-m -x exited with $?"
expect_same() {
    local differing
    differing=$(compare -metric AE "$2" "$3" null: 2>&1) || true
    [ "$differing" = 0 ] || { cp "$2" "$3" /tmp/; fail "$1: $differing pixels differ"; }
}
[ "$(identify -format %wx%h screen.png)" = 1280x860 ] || fail "screen size $(identify -format %wx%h screen.png)"
expect_same "the screen" screen.png pattern.png

# Interactive: the overlay takes the pointer; a drag from (100, 80) to (300, 200).
"$HELPER" -i -x region.png &
HELPER_PID=$!
timeout 10 xdotool search --sync --onlyvisible --class marigold-screencapture >/dev/null ||
    fail "no selection overlay"
xdotool mousemove 100 80 mousedown 1 mousemove 200 140 mousemove 300 200 mouseup 1
wait "$HELPER_PID" || fail "-i exited with $?"
[ "$(identify -format %wx%h region.png)" = 200x120 ] || fail "region $(identify -format %wx%h region.png)"
convert pattern.png -crop 200x120+100+80 +repage region-ref.png
expect_same "the region" region.png region-ref.png

"$HELPER" -i cancelled.png &
HELPER_PID=$!
timeout 10 xdotool search --sync --onlyvisible --class marigold-screencapture >/dev/null ||
    fail "no selection overlay to cancel"
xdotool key Escape
wait "$HELPER_PID" || fail "Esc exited with $?"
[ ! -e cancelled.png ] || fail "Esc wrote a file"

# A window of a known size and place, clicked.
display -geometry 240x160+400+300 -title target pattern.png[240x160+0+0] &
TARGET_PID=$!
timeout 10 xdotool search --sync --onlyvisible --name target >/dev/null || fail "no target window"
"$HELPER" -i -W -o window.png &
HELPER_PID=$!
timeout 10 xdotool search --sync --onlyvisible --class marigold-screencapture >/dev/null ||
    fail "no window picker"
xdotool mousemove 500 380 click 1
wait "$HELPER_PID" || fail "-i -W exited with $?"
kill "$TARGET_PID" 2>/dev/null || true
[ "$(identify -format %wx%h window.png)" = 240x160 ] || fail "window $(identify -format %wx%h window.png)"

"$HELPER" -q x.png 2>err.txt && fail "an unknown option was accepted"
grep -q "unknown option -q" err.txt || fail "no reason given: $(cat err.txt)"
echo PASS
