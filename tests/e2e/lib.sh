# Shared by the end-to-end tests: a private X server, a private settings folder, and
# helpers to find coloured areas on the screen.
set -euo pipefail

E2E_TMP=$(mktemp -d)
export XDG_CONFIG_HOME="$E2E_TMP/config" XDG_DATA_HOME="$E2E_TMP/data"
export XDG_RUNTIME_DIR="$E2E_TMP/runtime" QT_QPA_PLATFORM=xcb
mkdir -p "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
APP_PID=""
XVFB_PID=""

e2e_cleanup() {
    local status=$?
    [ -n "$APP_PID" ] && kill "$APP_PID" 2>/dev/null || true
    [ -n "$XVFB_PID" ] && kill "$XVFB_PID" 2>/dev/null || true
    # The app's log goes with the folder, and a report can come as late as quitting, when
    # nothing checks the app's status: a sanitizer report in it is shown and fails the test.
    if grep -qE '^==[0-9]+==ERROR: |: runtime error: ' "$E2E_TMP/app.log" 2>/dev/null; then
        cat "$E2E_TMP/app.log" >&2
        status=1
    fi
    rm -rf "$E2E_TMP"
    exit "$status"
}
trap e2e_cleanup EXIT

fail() {
    echo "FAIL: $*" >&2
    [ -n "${SHOT:-}" ] && [ -f "$SHOT" ] && cp "$SHOT" "/tmp/e2e-failure-$(basename "$0" .sh).png"
    exit 1
}

start_x() {
    for n in $(seq 90 140); do
        [ -e "/tmp/.X11-unix/X$n" ] || [ -e "/tmp/.X$n-lock" ] && continue
        # -noreset: a reset when xdpyinfo below leaves would refuse the app connecting next.
        Xvfb ":$n" -screen 0 1280x860x24 -nolisten tcp -noreset >/dev/null 2>&1 &
        XVFB_PID=$!
        export DISPLAY=":$n"
        for _ in $(seq 50); do
            xdpyinfo >/dev/null 2>&1 && return 0
            sleep 0.1
        done
        kill "$XVFB_PID" 2>/dev/null || true
    done
    fail "no X server could be started"
}

# Starts the app and waits until its window is mapped; sets WID.
start_app() {
    "$@" >"$E2E_TMP/app.log" 2>&1 &
    APP_PID=$!
    WID=$(timeout 20 xdotool search --sync --onlyvisible --name '^Marigold$' | head -n 1) ||
        fail "the main window did not appear: $(cat "$E2E_TMP/app.log")"
    sleep 1
}

screenshot() {
    SHOT="$E2E_TMP/shot.png"
    import -window root "$SHOT"
}

# Bounding box "W H X Y" of the pixels near COLOR inside the region "W H X Y" of the shot.
color_box() {
    local color=$1 w=$2 h=$3 x=$4 y=$5
    convert "$SHOT" -crop "${w}x${h}+${x}+${y}" +repage -fuzz 6% -fill black +opaque "$color" \
        -trim -format '%w %h %X %Y' info: 2>/dev/null | tr -d '+'
}

# How many pixels near COLOR inside the region "W H X Y" of the shot.
color_count() {
    local color=$1 w=$2 h=$3 x=$4 y=$5
    # Everything else black first, then the matches white (so white on screen is not counted).
    convert "$SHOT" -crop "${w}x${h}+${x}+${y}" +repage -fuzz 6% -fill black +opaque "$color" \
        -fill white -opaque "$color" -colorspace gray -format '%[fx:round(mean*w*h)]' info:
}

window_geometry() {
    eval "$(xdotool getwindowgeometry --shell "$WID")"
    WIN_X=$X WIN_Y=$Y WIN_W=$WIDTH WIN_H=$HEIGHT
}

# A picture of four quarters: red, green over blue, yellow.
make_quarters() {
    convert -size 300x200 xc:'#ff0000' xc:'#00ff00' +append \
        \( -size 300x200 xc:'#0000ff' xc:'#ffff00' +append \) -append "$@"
}

# Drags from (x0, y0) to (x1, y1) in `steps` moves with the left button held.
drag_mouse() {
    local x0=$1 y0=$2 x1=$3 y1=$4 steps=$5
    xdotool mousemove "$x0" "$y0" mousedown 1
    for step in $(seq 1 "$steps"); do
        xdotool mousemove $((x0 + (x1 - x0) * step / steps)) $((y0 + (y1 - y0) * step / steps))
        sleep 0.05
    done
    xdotool mouseup 1
    sleep 1
}

# With the quarters shown, drags a selection from just inside the red quarter's top-left
# to just inside its bottom-right. Sets HALF (the input pane's width).
select_red_quarter() {
    window_geometry
    screenshot
    HALF=$((WIN_W / 2))
    local rw rh rx ry
    read -r rw rh rx ry <<<"$(color_box '#ff0000' "$HALF" "$WIN_H" "$WIN_X" "$WIN_Y")"
    [ "${rw:-0}" -gt 40 ] || fail "the red quarter is not shown in the input pane"
    drag_mouse $((WIN_X + rx + 6)) $((WIN_Y + ry + 6)) \
        $((WIN_X + rx + rw - 8)) $((WIN_Y + ry + rh - 8)) 8
}
