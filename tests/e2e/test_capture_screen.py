#!/usr/bin/env python3
"""A person captures the screen from File ▸ Capture: the window steps aside and the capture
opens as "screenshot", the size of the screen. A timed capture counts "3", "2", "1" in a
window of its own first. Without the helper beside Marigold, the alert names it."""
import os
import shutil

from atspi_app import check, run, step, wait_for


def capture(app, item):
    step(f"File ▸ Capture ▸ {item}")
    menu = app.find("Capture", app.role("ROLE_MENU_ITEM"), app.find("File", app.role("ROLE_MENU_ITEM")))
    app.act(app.find(item, app.role("ROLE_MENU_ITEM"), menu))


def flow(session, binary):
    app = session.launch(binary)
    capture(app, "Screen")
    app.wait_text("Document name", "screenshot")
    size = app.named("Source size")
    wait_for("the screen's size", lambda: size.description == "1280 x 860")
    check(app.window.getState().contains(app.role("STATE_SHOWING")), "the window did not come back")

    capture(app, "Timed Screen…")
    dialog = app.top_level("Timed Screen Capture", app.role("ROLE_DIALOG"))
    app.type_into("Delay", "2", dialog)
    app.act(app.find("Start", app.role("ROLE_PUSH_BUTTON"), dialog))
    countdown = wait_for("the countdown window", lambda: next(
        (w for w in app.root if w is not None and w.name == "Countdown"), None))
    wait_for(lambda: f"the countdown to show 1; it shows {countdown.description!r}",
             lambda: countdown.description == "1")

    wait_for("the window back after the timed capture",
             lambda: app.window.getState().contains(app.role("STATE_SHOWING")) and
             not countdown.getState().contains(app.role("STATE_SHOWING")))

    # A Marigold with no helper beside it.
    alone = session.path("alone/marigold")
    os.makedirs(os.path.dirname(alone))
    shutil.copy(binary, alone)
    app.quit()
    app = session.launch(alone)
    capture(app, "Screen")
    alert = app.top_level("Error", app.role("ROLE_ALERT"))
    expected = f"Screen capture utility ({os.path.dirname(alone)}/marigold-screencapture) cannot be found."
    app.find(expected, app.role("ROLE_LABEL"), alert)
    app.act(app.find("Okay", app.role("ROLE_PUSH_BUTTON"), alert))


run(flow)
