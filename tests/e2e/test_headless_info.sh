#!/usr/bin/env bash
# `marigold --info FILE` with no display: the information window's fields as
# "Label: value" lines, checked against what exiftool wrote; failures give one line and a
# non-zero status.
APP=$1
source "$(dirname "$0")/lib.sh"
cd "$E2E_TMP"

info() { env -u DISPLAY -u WAYLAND_DISPLAY QT_QPA_PLATFORM=xcb "$APP" --info "$@"; }
expect() { [ "$2" = "$3" ] || fail "$1: expected '$3', got '$2'"; }

convert -size 160x120 plasma:fractal -quality 90 photo.jpg
exiftool -q -overwrite_original -Make=InfoCam -Model='Model 2' -ExposureTime=1/125 -FNumber=8 \
    -ISO=400 -EXIF:Flash#=16 -Orientation#=3 -Comment='from exiftool' photo.jpg

info photo.jpg >out.txt || fail "--info failed: $(cat out.txt)"
expect "lines" "$(wc -l <out.txt)" 19
expect "first field" "$(head -n 1 out.txt)" "Name: photo"
for line in "Kind: JPEG" "Width: 160 pixels" "Height: 120 pixels" "Camera make: InfoCam" \
    "Camera model: Model 2" "Exposure time: 1/125" "Aperture: f/8.0" "ISO: 400" \
    "Flash: No" "Orientation: 3" "Comment: from exiftool" "Size: $(stat -c %s photo.jpg)"; do
    grep -qxF "$line" out.txt || fail "missing '$line' in: $(cat out.txt)"
done

echo "no picture" >notes.jpg
for args in "notes.jpg" "missing.jpg" "."; do
    status=0
    info $args >out.txt 2>err.txt || status=$?
    [ "$status" -eq 1 ] || fail "--info $args: status $status"
    expect "--info $args stderr lines" "$(wc -l <err.txt)" 1
    [ ! -s out.txt ] || fail "--info $args printed fields"
done
status=0
info >/dev/null 2>&1 || status=$?
[ "$status" -eq 2 ] || fail "--info without a file: status $status"
echo "PASS"
