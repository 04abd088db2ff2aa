#!/usr/bin/env bash
# A person selects the red quarter of a picture and drags the preview out of the output
# pane. Here the drop lands on Marigold's own input pane, which opens whatever file is
# dropped on it: the dropped file must be the cropped output, so the input pane then shows
# red only.
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
x0=$((WIN_X + rx + 6)) y0=$((WIN_Y + ry + 6))
x1=$((WIN_X + rx + rw - 8)) y1=$((WIN_Y + ry + rh - 8))
xdotool mousemove "$x0" "$y0" mousedown 1
for step in 1 2 3 4 5 6; do
    xdotool mousemove $((x0 + (x1 - x0) * step / 6)) $((y0 + (y1 - y0) * step / 6))
    sleep 0.05
done
xdotool mouseup 1
sleep 1
screenshot
out_w=$((WIN_W - half)) out_x=$((WIN_X + half))
read -r ow oh ox oy <<<"$(color_box '#ff0000' "$out_w" "$WIN_H" "$out_x" "$WIN_Y")"
[ "${ow:-0}" -gt 40 ] || fail "the output pane shows no red"

# Press in the middle of the output, drag to the input pane in small steps, release.
sx=$((out_x + ox + ow / 2)) sy=$((WIN_Y + oy + oh / 2))
tx=$((WIN_X + half / 2)) ty=$((WIN_Y + WIN_H / 3))
xdotool mousemove "$sx" "$sy" mousedown 1
for step in $(seq 1 12); do
    xdotool mousemove $((sx + (tx - sx) * step / 12)) $((sy + (ty - sy) * step / 12))
    sleep 0.08
done
sleep 0.3
xdotool mouseup 1
sleep 1.5
screenshot

red=$(color_count '#ff0000' "$half" "$WIN_H" "$WIN_X" "$WIN_Y")
others=0
for colour in '#00ff00' '#0000ff' '#ffff00'; do
    others=$((others + $(color_count "$colour" "$half" "$WIN_H" "$WIN_X" "$WIN_Y")))
done
echo "input pane after the drop: red $red, other quarters $others"
[ "$red" -gt 20000 ] && [ "$others" -eq 0 ] || fail "the dropped file was not the red crop"
grep -q "com.bluefinch.Marigold-$APP_PID" <<<"$(ls -d /tmp/com.bluefinch.Marigold-* 2>/dev/null)" ||
    fail "no temporary folder of the running app"
echo "PASS"
