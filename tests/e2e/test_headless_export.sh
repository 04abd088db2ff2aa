#!/usr/bin/env bash
# `marigold --export` with no display at all: each format and size option checked from the
# outside (vipsheader, identify, exiftool, compare), the JPEG size limit, and bad arguments
# answered with one line on standard error, a non-zero status and no file.
APP=$1
source "$(dirname "$0")/lib.sh"
cd "$E2E_TMP"

# No DISPLAY and the X11 platform forced: a GUI application object would abort here.
export_run() { env -u DISPLAY -u WAYLAND_DISPLAY QT_QPA_PLATFORM=xcb "$APP" "$@"; }
size_of() { vipsheader -f width "$1" | tr -d '\n'; echo -n x; vipsheader -f height "$1"; }
expect() { [ "$2" = "$3" ] || fail "$1: expected '$3', got '$2'"; }

# Photo-like: smooth shading plus grain, so JPEG sizes behave as they do for photographs.
convert -seed 1 -size 600x450 plasma:fractal -resize 200% -attenuate 0.5 +noise Gaussian \
    -quality 92 photo.jpg
vips copy photo.jpg photo.png

# Formats and sizes.
export_run --export w.png --width 600 photo.jpg || fail "--width"
expect "--width size" "$(size_of w.png)" 600x450
expect "--width format" "$(identify -format %m w.png)" PNG

export_run --export s.tif --scale 0.5 photo.jpg || fail "--scale"
expect "--scale size" "$(size_of s.tif)" 600x450
expect "tif format" "$(identify -format %m s.tif)" TIFF
expect "tif compression" "$(exiftool -s3 -Compression s.tif)" LZW

export_run --export c.gif --crop 100,50,400,300 photo.jpg || fail "--crop gif"
expect "--crop size" "$(size_of c.gif)" 400x300
expect "gif format" "$(identify -format %m c.gif)" GIF

export_run --export h.jpeg --crop 100,50,400,300 --height 150 photo.jpg || fail "--height"
expect "--height size" "$(size_of h.jpeg)" 200x150
expect "jpeg format" "$(identify -format %m h.jpeg)" JPEG

# The framing of the window's ratio and size presets: the largest centred region.
export_run --export square.png --ratio 1:1 photo.png || fail "--ratio"
vips crop photo.png middle.png 150 0 900 900
expect "--ratio region" "$(compare -metric AE square.png middle.png null: 2>&1)" 0
export_run --export post.jpg --size 1080x1080 photo.jpg || fail "--size"
expect "--size size" "$(size_of post.jpg)" 1080x1080

export_run --export named.img --format tif photo.jpg || fail "--format"
expect "--format wins" "$(identify -format %m named.img)" TIFF
export_run --export plain photo.jpg || fail "no extension"
expect "JPEG by default" "$(identify -format %m plain)" JPEG

# A camera photo stored on its side is exported upright and says so; its EXIF block travels
# into a JPEG by default, and not with --preserve-exif 0.
cp photo.jpg tagged.jpg
# A thumbnail of noise: an EXIF block of about 9 KB, near the small limits below.
convert -seed 3 -size 128x96 xc:gray +noise Random -quality 90 thumb.jpg
exiftool -q -overwrite_original -Make=ExportCam -Orientation#=6 '-ThumbnailImage<=thumb.jpg' tagged.jpg
export_run --export carried.jpg --width 300 tagged.jpg || fail "tagged export"
expect "EXIF make kept" "$(exiftool -s3 -Make carried.jpg)" ExportCam
expect "marked upright" "$(exiftool -s3 -n -Orientation carried.jpg)" 1
expect "turned upright" "$(size_of carried.jpg)" 300x400
export_run --export bare.jpg --width 300 --preserve-exif 0 tagged.jpg || fail "--preserve-exif 0"
expect "no EXIF with 0" "$(exiftool -s3 -Make bare.jpg)" ""

# The carried block counts against the limit: the whole file stays under it.
for limit in 10 12 16; do
    if export_run --export small.jpg --width 120 --limit "$limit" tagged.jpg 2>err; then
        bytes=$(stat -c %s small.jpg)
        [ "$bytes" -lt $((limit * 1024)) ] || fail "--limit $limit wrote $bytes bytes"
        expect "EXIF within the limit" "$(exiftool -s3 -Make small.jpg)" ExportCam
    else
        grep -q 'File Size Limit Too Low' err || fail "--limit $limit said: $(cat err)"
    fi
    rm -f small.jpg
done

# A format whose libvips module is loaded only when a file needs it.
vips copy photo.png photo.heic
export_run --export from-heic.png --width 300 photo.heic || fail "HEIF input"
expect "HEIF input size" "$(size_of from-heic.png)" 300x225

# The crop counts rows from the top, as ImageMagick does.
export_run --export c.png --crop 100,50,400,300 photo.png || fail "--crop png"
convert photo.png -crop 400x300+100+50 +repage ref.png
expect "cropped pixels differing" "$(compare -metric AE c.png ref.png null: 2>&1)" 0

# A counter-clockwise quarter turn makes the landscape photo portrait, and the crop is taken
# from the turned picture.
export_run --export turned.png --rotate 90 --crop 50,100,300,500 photo.png || fail "--rotate 90"
expect "turned and cropped size" "$(identify -format %wx%h turned.png)" 300x500
convert photo.png -rotate -90 -crop 300x500+50+100 +repage turned-ref.png
expect "turned pixels differing" "$(compare -metric AE turned.png turned-ref.png null: 2>&1)" 0

# Under the limit, after stepping the quality down.
export_run --export limited.jpg --quality 100 --limit 60 --verbose photo.jpg 2>trace || fail "--limit 60"
bytes=$(stat -c %s limited.jpg)
[ "$bytes" -lt $((60 * 1024)) ] || fail "limited.jpg is $bytes bytes"
[ "$(grep -c '^quality [0-9]*, [0-9]* bytes$' trace)" -ge 2 ] || fail "no attempts traced: $(cat trace)"
expect "last attempt is the file" "$(grep '^quality' trace | tail -n 1 | cut -d' ' -f3)" "$bytes"

# An unreachable limit writes nothing and keeps an earlier file.
echo "earlier export" >kept.jpg
cp kept.jpg kept.orig
for out in kept.jpg fresh.jpg; do
    status=0
    export_run --export "$out" --quality 100 --limit 10 photo.jpg 2>err || status=$?
    [ "$status" -ne 0 ] || fail "unreachable limit succeeded"
    [ "$(wc -l <err)" -eq 1 ] && grep -q '^marigold: .*File Size Limit Too Low' err ||
        fail "unreachable limit said: $(cat err)"
done
cmp -s kept.jpg kept.orig || fail "the earlier file was changed"
[ ! -e fresh.jpg ] || fail "a file was written despite the limit"

# Nonsense: one line, a non-zero status, no file.
printf 'plain text\n' >notes.jpg
head -c 20000 photo.jpg >cut.jpg
vips black thin.png 30000 10 --bands 3
bad_runs=(
    "--export bad.jpg --scale abc photo.jpg"
    "--export bad.jpg --scale 0 photo.jpg"
    "--export bad.jpg --scale -1 photo.jpg"
    "--export bad.jpg --crop 1,2,3 photo.jpg"
    "--export bad.jpg --crop 1200,0,10,10 photo.jpg"
    "--export bad.jpg --quality 500 photo.jpg"
    "--export bad.jpg --format bmp photo.jpg"
    "--export bad.jpg --width 100 --height 100 photo.jpg"
    "--export bad.jpg --limit 5 photo.jpg"
    "--export bad.jpg"
    "--export bad.jpg missing.jpg"
    "--export bad.jpg notes.jpg"
    "--export bad.jpg cut.jpg"
    "--export no/such/folder/bad.jpg photo.jpg"
    "--export photo.png/bad.jpg photo.jpg"
    "--export bad.jpg --rotate 181 photo.jpg"
    "--export bad.jpg --rotate nan photo.jpg"
    "--export bad.jpg --rotate 45 thin.png"
)
for arguments in "${bad_runs[@]}"; do
    status=0
    # shellcheck disable=SC2086
    export_run $arguments >out 2>err || status=$?
    [ "$status" -ne 0 ] || fail "succeeded: $arguments"
    [ "$(wc -l <err)" -eq 1 ] && grep -q '^marigold: .' err || fail "$arguments said: $(cat err)"
    [ ! -s out ] || fail "$arguments wrote to standard output"
    [ ! -e bad.jpg ] || fail "$arguments left a file"
    echo "ok: $(cat err)"
done

# Help, with and without the export.
export_run --export --help >help || fail "--export --help"
grep -q -- '--crop X,Y,W,H' help || fail "the export help lacks --crop"
grep -q -- '--rotate DEG .*counter-clockwise' help || fail "the export help lacks --rotate"
QT_QPA_PLATFORM=offscreen "$APP" --help >help || fail "--help"
grep -q -- '--export' help || fail "--help does not mention --export"
echo PASS
