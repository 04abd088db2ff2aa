#!/usr/bin/env bash
# `marigold FILE` with a file that is not a usable image says why in one line on standard
# error and still opens its window (offscreen here) rather than crashing. (A JPEG cut short
# opens with the part that decodes; the window says so.)
set -euo pipefail
APP=$1
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
export XDG_CONFIG_HOME="$tmp/config" QT_QPA_PLATFORM=offscreen

printf 'plain text\n' >"$tmp/notes.jpg"
printf 'GIF89a' >"$tmp/cut.gif"
: >"$tmp/empty.png"

for file in "$tmp/notes.jpg" "$tmp/cut.gif" "$tmp/empty.png" "$tmp/missing.png"; do
    "$APP" "$file" 2>"$tmp/err" &
    pid=$!
    for _ in $(seq 150); do
        grep -q "^marigold: " "$tmp/err" && break
        sleep 0.1
    done
    sleep 0.5
    kill -0 "$pid" 2>/dev/null || { echo "FAIL: marigold ended on $file" >&2; exit 1; }
    kill "$pid"
    wait "$pid" 2>/dev/null || true
    lines=$(grep -c "^marigold: $file: ." "$tmp/err" || true)
    if [ "$lines" -ne 1 ]; then
        echo "FAIL: expected one reason line for $file, got:" >&2
        cat "$tmp/err" >&2
        exit 1
    fi
    echo "ok: $(grep "^marigold: " "$tmp/err")"
done
echo PASS
