#!/usr/bin/env python3
"""A person turns the border on in Preferences and cancels: nothing changes. The border
turned on from the Output menu shows in Preferences, and OK keeps it with a new edit: the
next saved file is framed, as ImageMagick reads it."""
import os
import subprocess

from atspi_app import DOWN_KEYSYM, check, run, step, wait_for
from oracles import image_size, make_photo

BORDER = "Draw a border around the output"
CROSSHAIR = "Show crosshair"


def corner(path):
    """The top-left pixel as ImageMagick reads it, "#RRGGBB"."""
    result = subprocess.run(["convert", path, "-format", "%[hex:p{0,0}]", "info:"],
                            capture_output=True, text=True)
    check(result.returncode == 0, f"convert cannot read {path}: {result.stderr.strip()}")
    return "#" + result.stdout.strip()[:6].upper()


def flow(session, binary):
    settings = session.path("config/Marigold/Marigold.ini")
    app = session.launch(binary, make_photo(session.path("photo.jpg"), 640, 480))
    app.menu("Edit", "Select All")
    # PNG keeps the border's pixels exactly.
    app.press_mnemonic("o", app.labelled("Format:", "ROLE_COMBO_BOX"))
    app.press(DOWN_KEYSYM)

    def stored(line):
        return os.path.isfile(settings) and line in open(settings).read().split("\n")

    def preferences():
        app.menu("Edit", "Preferences…")
        return app.top_level("Preferences", app.role("ROLE_DIALOG"))

    def box(dialog, name):
        return app.find(name, app.role("ROLE_CHECK_BOX"), dialog)

    def checked(acc):
        return acc.getState().contains(app.role("STATE_CHECKED"))

    plain = session.path("plain.png")
    app.save_as(plain)
    wait_for(f"{plain} to be written", lambda: os.path.isfile(plain))
    check(corner(plain) != "#000000", f"the unframed output's corner is {corner(plain)}")

    dialog = preferences()
    app.act(box(dialog, BORDER), "Toggle")
    wait_for("the border box to be ticked", lambda: checked(box(dialog, BORDER)))
    app.act(app.find("Cancel", app.role("ROLE_PUSH_BUTTON"), dialog))
    wait_for("Preferences to close", lambda: not dialog.getState().contains(app.role("STATE_SHOWING")))
    check(not stored("Border=true"), "Cancel stored the border")

    app.menu("Output", "Border")
    wait_for("the menu's border to be stored", lambda: stored("Border=true"))
    dialog = preferences()
    check(checked(box(dialog, BORDER)), "Preferences does not show the border the menu set")
    app.act(box(dialog, CROSSHAIR), "Toggle")
    app.act(app.find("OK", app.role("ROLE_PUSH_BUTTON"), dialog))
    wait_for("OK to store both", lambda: stored("CrossHair=true") and stored("Border=true"))

    framed = session.path("framed.png")
    app.save_as(framed)
    wait_for(f"{framed} to be written", lambda: os.path.isfile(framed))
    step(f"framed: {image_size(framed)}, corner {corner(framed)}")
    check(corner(framed) == "#000000", f"the framed output's corner is {corner(framed)}")


run(flow)
