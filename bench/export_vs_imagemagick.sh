#!/usr/bin/env bash
# Whole-process JPEG export under a file-size limit: `marigold --export` against
# ImageMagick's `-define jpeg:extent`, same input, same starting quality, median wall time.
# Usage: bench/export_vs_imagemagick.sh [MARIGOLD] [RUNS]
set -euo pipefail
APP=${1:-build/app/marigold}
RUNS=${2:-7}
LIMITS=(50 100 200 500)
# ImageMagick's own binary: a wrapper named `convert` earlier in PATH would add its start-up
# to their time.
IM=$(command -v convert-im6.q16 || command -v convert)

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

# Photograph-like and deterministic: soft fractal clouds for the shapes and shading,
# softened and less saturated, then a little sensor grain; 8 bits per sample.
"$IM" -seed 1 -size 1000x750 plasma:fractal -blur 0x2 -modulate 100,60 -resize 200% \
    -attenuate 0.25 +noise Gaussian -depth 8 "$tmp/in.png"
# The same pixels as a camera would hand them over.
"$IM" "$tmp/in.png" -quality 95 "$tmp/in.jpg"

now_ms() { date +%s%3N; }
median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

# Times one run of "$@" in milliseconds.
wall_ms() {
    local start
    start=$(now_ms)
    "$@" >/dev/null 2>&1
    echo $(($(now_ms) - start))
}

# Quality 100 makes the search walk the longest way down; 80 is the application's own
# starting quality.
for INPUT in in.png in.jpg; do
for QUALITY in 100 80; do
    echo
    echo "Input: 2000 x 1500 photo-like $INPUT, starting quality $QUALITY, median of $RUNS runs"
    printf '%-9s | %-35s | %-27s | %s\n' "" "marigold --export" "ImageMagick jpeg:extent" ""
    printf '%-9s | %8s %8s %9s %7s | %8s %9s %7s | %s\n' \
        "limit KB" attempts quality bytes ms quality bytes ms "ours/theirs"
    for limit in "${LIMITS[@]}"; do
        ours="$tmp/ours.jpg"
        theirs="$tmp/theirs.jpg"
        "$APP" --export "$ours" --quality "$QUALITY" --limit "$limit" --verbose "$tmp/$INPUT" \
            2>"$tmp/trace" || { echo "marigold failed at $limit KB: $(tail -n 1 "$tmp/trace")" >&2; exit 1; }
        attempts=$(grep -c '^quality ' "$tmp/trace")
        quality=$(grep '^quality ' "$tmp/trace" | tail -n 1 | awk '{ print $2 + 0 }')
        "$IM" "$tmp/$INPUT" -quality "$QUALITY" -define jpeg:extent="${limit}KB" "$theirs"
        theirs_quality=$(identify -format %Q "$theirs")

        # Alternated, so that a change in the machine's load falls on both alike.
        : >"$tmp/ours_ms"
        : >"$tmp/theirs_ms"
        for _ in $(seq "$RUNS"); do
            wall_ms "$APP" --export "$ours" --quality "$QUALITY" --limit "$limit" "$tmp/$INPUT" >>"$tmp/ours_ms"
            wall_ms "$IM" "$tmp/$INPUT" -quality "$QUALITY" -define jpeg:extent="${limit}KB" "$theirs" \
                >>"$tmp/theirs_ms"
        done
        ours_ms=$(median <"$tmp/ours_ms")
        theirs_ms=$(median <"$tmp/theirs_ms")

        printf '%-9s | %8s %8s %9s %7s | %8s %9s %7s | %.2f\n' "$limit" "$attempts" "$quality" \
            "$(stat -c %s "$ours")" "$ours_ms" "$theirs_quality" "$(stat -c %s "$theirs")" \
            "$theirs_ms" "$(awk -v a="$ours_ms" -v b="$theirs_ms" 'BEGIN { print a / b }')"
    done
done
done
