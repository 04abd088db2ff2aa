#!/usr/bin/env bash
# A person selects the red quarter of a picture and drags the preview out of the output
# pane. Here the drop lands on Marigold's own input pane, which opens whatever file is
# dropped on it: the dropped file must be the cropped output, so the input pane then shows
# red only.
source "$(dirname "$0")/lib.sh"
APP=$1

IMAGE="$E2E_TMP/quarters.png"
make_quarters "$IMAGE"

start_x
start_app "$APP" "$IMAGE"
select_red_quarter
screenshot
out_w=$((WIN_W - HALF)) out_x=$((WIN_X + HALF))
read -r ow oh ox oy <<<"$(color_box '#ff0000' "$out_w" "$WIN_H" "$out_x" "$WIN_Y")"
[ "${ow:-0}" -gt 40 ] || fail "the output pane shows no red"

# Press in the middle of the output, drag to the input pane in small steps, release.
sx=$((out_x + ox + ow / 2)) sy=$((WIN_Y + oy + oh / 2))
tx=$((WIN_X + HALF / 2)) ty=$((WIN_Y + WIN_H / 3))
drag_mouse "$sx" "$sy" "$tx" "$ty" 12
screenshot

red=$(color_count '#ff0000' "$HALF" "$WIN_H" "$WIN_X" "$WIN_Y")
others=0
for colour in '#00ff00' '#0000ff' '#ffff00'; do
    others=$((others + $(color_count "$colour" "$HALF" "$WIN_H" "$WIN_X" "$WIN_Y")))
done
echo "input pane after the drop: red $red, other quarters $others"
[ "$red" -gt 20000 ] && [ "$others" -eq 0 ] || fail "the dropped file was not the red crop"
grep -q "com.bluefinch.Marigold-$APP_PID" <<<"$(ls -d /tmp/com.bluefinch.Marigold-* 2>/dev/null)" ||
    fail "no temporary folder of the running app"
echo "PASS"
