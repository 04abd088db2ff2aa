#!/usr/bin/env bash
# Generates the seed inputs of every fuzz target into DIR/<target>/: small JPEGs made by
# ImageMagick and tagged by exiftool (both byte orders, a thumbnail, a comment, GPS, XMP),
# the EXIF blocks cut out of them, and source + target pairs for the transplant.
set -euo pipefail
DIR=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$DIR"/{sections_exif,sections_image,exif_block,orientation,transplant}

convert -size 40x30 gradient:red-blue -quality 80 "$work/plain.jpg"
convert -size 16x12 gradient:green-white "$work/thumb.jpg"
convert -size 40x30 gradient:gray-black -interlace Plane "$work/progressive.jpg"
tag() {  # tag NAME exiftool-arguments...
    local name=$1
    shift
    cp "$work/plain.jpg" "$work/$name.jpg"
    exiftool -q -q -overwrite_original "$@" "$work/$name.jpg"
}
tag intel -ExifByteOrder=II -Make=Maker -Model=Model-1 -DateTimeOriginal='2024:05:06 07:08:09' \
    -ExposureTime=1/250 -FNumber=5.6 -ISO=3 -FocalLength=35 -EXIF:Flash#=1 -Orientation#=6 \
    -FocalPlaneXResolution=4000 -FocalPlaneResolutionUnit=inches -ExifImageWidth=6000 \
    "-ThumbnailImage<=$work/thumb.jpg"
tag motorola -ExifByteOrder=MM -Make=Other -Orientation#=8 -ExposureCompensation=-0.7 \
    -SubjectDistance=3.5 -ShutterSpeedValue=1/60 -ApertureValue=2.8 -MeteringMode=5 \
    "-ThumbnailImage<=$work/thumb.jpg"
tag comment -Comment="first line
second line" -Make=Commented
tag gps -GPSLatitude=48.85 -GPSLatitudeRef=N -GPSLongitude=2.35 -GPSLongitudeRef=E -Orientation#=3
tag xmp -XMP:Title=Title -XMP:Creator=Someone

# The in-place orientation routines look only at an EXIF segment right after SOI.
for name in intel motorola gps; do
    exiftool -q -q -JFIF:all= -o "$DIR/orientation/$name-exif-first.jpg" "$work/$name.jpg"
done

for f in "$work"/*.jpg; do
    name=$(basename "$f" .jpg)
    for target in sections_exif sections_image orientation; do cp "$f" "$DIR/$target/$name.jpg"; done
    # The EXIF block as an APP1 segment's data: length bytes, "Exif", two zero bytes, TIFF.
    if exiftool -b -EXIF "$f" >"$work/tiff" 2>/dev/null && [ -s "$work/tiff" ]; then
        length=$(($(stat -c %s "$work/tiff") + 8))
        { printf "\\x$(printf %02x $((length >> 8)))\\x$(printf %02x $((length & 255)))Exif\\0\\0"
          cat "$work/tiff"; } >"$DIR/exif_block/$name.bin"
    fi
    # Transplant pairs: this file as the source, the plain one as the target.
    size=$(stat -c %s "$f")
    { printf "\\x$(printf %02x $((size >> 8)))\\x$(printf %02x $((size & 255)))"
      cat "$f" "$work/progressive.jpg"; } >"$DIR/transplant/$name.bin"
done
