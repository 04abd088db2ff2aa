#!/usr/bin/env bash
# A person opens a four-coloured picture, drags a selection over its red quarter, and the
# output pane shows red and nothing of the other three colours.
source "$(dirname "$0")/lib.sh"
APP=$1

IMAGE="$E2E_TMP/quarters.png"
convert -size 300x200 xc:'#ff0000' xc:'#00ff00' +append \
    \( -size 300x200 xc:'#0000ff' xc:'#ffff00' +append \) -append "$IMAGE"

start_x
start_app "$APP" "$IMAGE"
window_geometry
screenshot

half=$((WIN_W / 2))
read -r rw rh rx ry <<<"$(color_box '#ff0000' "$half" "$WIN_H" "$WIN_X" "$WIN_Y")"
[ "${rw:-0}" -gt 40 ] || fail "the red quarter is not shown in the input pane"
# Drag from just inside the red quarter's top-left to just inside its bottom-right.
x0=$((WIN_X + rx + 4)) y0=$((WIN_Y + ry + 4))
x1=$((WIN_X + rx + rw - 5)) y1=$((WIN_Y + ry + rh - 5))
xdotool mousemove "$x0" "$y0" mousedown 1
for step in 1 2 3 4 5 6 7 8; do
    xdotool mousemove $((x0 + (x1 - x0) * step / 8)) $((y0 + (y1 - y0) * step / 8))
    sleep 0.05
done
xdotool mouseup 1
sleep 1
screenshot

out_w=$((WIN_W - half)) out_x=$((WIN_X + half))
red=$(color_count '#ff0000' "$out_w" "$WIN_H" "$out_x" "$WIN_Y")
green=$(color_count '#00ff00' "$out_w" "$WIN_H" "$out_x" "$WIN_Y")
blue=$(color_count '#0000ff' "$out_w" "$WIN_H" "$out_x" "$WIN_Y")
yellow=$(color_count '#ffff00' "$out_w" "$WIN_H" "$out_x" "$WIN_Y")
echo "output pane: red $red, green $green, blue $blue, yellow $yellow"
[ "$red" -gt 20000 ] || fail "the output pane does not show the selected red region"
[ "$green" -eq 0 ] && [ "$blue" -eq 0 ] && [ "$yellow" -eq 0 ] ||
    fail "the output pane shows colours from outside the selection"

# Undo (Ctrl+Z) takes the selection back: the output pane empties.
xdotool key --window "$WID" ctrl+z
sleep 1
screenshot
red=$(color_count '#ff0000' "$out_w" "$WIN_H" "$out_x" "$WIN_Y")
[ "$red" -eq 0 ] || fail "undo did not remove the selection ($red red pixels remain)"
echo "PASS"
