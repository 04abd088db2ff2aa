#!/usr/bin/env bash
# A person opens a four-coloured picture, drags a selection over its red quarter, and the
# output pane shows red and nothing of the other three colours.
source "$(dirname "$0")/lib.sh"
APP=$1

IMAGE="$E2E_TMP/quarters.png"
make_quarters "$IMAGE"

start_x
start_app "$APP" "$IMAGE"
select_red_quarter
screenshot

out_w=$((WIN_W - HALF)) out_x=$((WIN_X + HALF))
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
