#!/usr/bin/env bash
# A person opens a photo, drags a selection over its red quarter, presses Ctrl+C and pastes
# elsewhere: the clipboard holds the cropped pixels and the written file, in the forms
# image editors and file managers paste.
source "$(dirname "$0")/lib.sh"
APP=$1

IMAGE="$E2E_TMP/quarters.jpg"
make_quarters -quality 92 "$IMAGE"

start_x
start_app "$APP" "$IMAGE"
select_red_quarter
xdotool key --window "$WID" ctrl+c
sleep 1

clip() { timeout 10 xclip -selection clipboard -t "$1" -o; }
targets=$(clip TARGETS) || fail "nothing on the clipboard"
for wanted in image/png image/tiff text/uri-list x-special/gnome-copied-files; do
    grep -qx "$wanted" <<<"$targets" || fail "the clipboard does not offer $wanted: $targets"
done

# The pixels, as an image editor pastes them: red only, the selection's size.
clip image/png >"$E2E_TMP/pasted.png" || fail "image/png could not be read"
read -r pw ph <<<"$(identify -format '%w %h' "$E2E_TMP/pasted.png")"
[ "$pw" -gt 100 ] && [ "$ph" -gt 60 ] || fail "pasted image is ${pw}x${ph}"
read -r r g b <<<"$(convert "$E2E_TMP/pasted.png" -format '%[fx:round(255*mean.r)] %[fx:round(255*mean.g)] %[fx:round(255*mean.b)]' info:)"
echo "pasted ${pw}x${ph}, mean colour $r $g $b"
[ "$r" -gt 230 ] && [ "$g" -lt 25 ] && [ "$b" -lt 25 ] || fail "pasted pixels are not the red quarter"

# The file, as a file manager pastes it: a JPEG named after the document, same size.
uri=$(clip text/uri-list | head -n 1 | tr -d '\r')
file=$(python3 -c 'import sys, urllib.parse; print(urllib.parse.unquote(urllib.parse.urlparse(sys.argv[1]).path))' "$uri")
[ -f "$file" ] || fail "the copied file $file does not exist"
[ "$(basename "$file")" = "quarters.jpg" ] || fail "the copied file is named $(basename "$file")"
[ "$(identify -format '%m %w %h' "$file")" = "JPEG $pw $ph" ] || fail "the copied file differs from the pixels"
gnome=$(clip x-special/gnome-copied-files)
[ "$gnome" = "$(printf 'copy\n%s' "$uri")" ] || fail "file managers would not paste it: $gnome"

# Quitting takes the temporary folder with it.
folder=$(dirname "$(dirname "$file")")
xdotool key ctrl+q
timeout 10 tail --pid="$APP_PID" -f /dev/null || fail "Ctrl+Q did not quit"
APP_PID=""
[ ! -e "$folder" ] || fail "the temporary folder $folder outlived the application"
echo "PASS"
