#!/usr/bin/env bash
# The screen-capture helper through a screenshot portal on a private session bus: the request
# and its options, the portal's picture copied as it is, and its "cancelled" and "failed"
# answers.
source "$(dirname "$0")/lib.sh"
HELPER="$(realpath "$(dirname "$1")")/marigold-screencapture"
MOCK="$(realpath "$(dirname "$0")")/mock_portal.py"
cd "$E2E_TMP"
convert -size 320x200 gradient:red-blue picture.png

# One capture against a portal that answers $1; the helper's arguments follow.
against_portal() {
    local answer=$1
    shift
    dbus-run-session -- bash -c '
        /usr/bin/python3 "$0" "$1" picture.png record.jsonl & MOCK_PID=$!
        for _ in $(seq 100); do
            gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus \
                --method org.freedesktop.DBus.NameHasOwner org.freedesktop.portal.Desktop |
                grep -q true && break
            sleep 0.05
        done
        shift
        QT_QPA_PLATFORM=offscreen timeout 20 "$@"; status=$?
        kill $MOCK_PID
        exit $status' "$MOCK" "$answer" "$HELPER" "$@"
}

against_portal ok -x shot.png || fail "ok: status $?"
cmp -s shot.png picture.png || fail "the portal's picture was not copied as it is"
against_portal ok -i -x chosen.png || fail "interactive: status $?"
[ "$(sed -n 1p record.jsonl | grep -c '"interactive": false')" = 1 ] ||
    fail "a screen capture asked for an interactive one: $(sed -n 1p record.jsonl)"
[ "$(sed -n 2p record.jsonl | grep -c '"interactive": true')" = 1 ] ||
    fail "-i did not ask for an interactive one: $(sed -n 2p record.jsonl)"
grep -q '"handle_token": "marigold' record.jsonl || fail "no handle token: $(cat record.jsonl)"

against_portal cancel -i cancelled.png || fail "cancel: status $?"
[ ! -e cancelled.png ] || fail "a cancelled capture wrote a file"
if against_portal fail failed.png 2>err.txt; then fail "a failed capture said 0"; fi
grep -q "portal failed" err.txt || fail "no reason given: $(cat err.txt)"
[ ! -e failed.png ] || fail "a failed capture wrote a file"
echo PASS
