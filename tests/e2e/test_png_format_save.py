#!/usr/bin/env python3
"""A keyboard user picks PNG in the format pop-up and saves: the JPEG quality controls are
switched off, the file written is a PNG, and one Undo step names the change."""
import os

from atspi_app import DOWN_KEYSYM, check, run, step, wait_for
from oracles import image_size, make_photo


def flow(session, binary):
    app = session.launch(binary, make_photo(session.path("photo.jpg"), 640, 480))
    app.menu("Edit", "Select All")
    app.press_mnemonic("o", app.labelled("Format:", "ROLE_COMBO_BOX"))
    app.press(DOWN_KEYSYM)
    quality = app.field("JPEG quality number")
    wait_for("the JPEG quality field to be switched off",
             lambda: not app.is_enabled(quality))

    target = session.path("converted.png")
    app.save_as(target)
    wait_for(f"{target} to be written", lambda: os.path.isfile(target))
    step(f"written: {image_size(target)}")
    check(image_size(target) == "PNG 640x480", f"the saved file is {image_size(target)}")
    undo = app.menu("Edit", "Undo", prefix=True)
    check(undo == "Undo Format Change", f"the Undo item reads {undo!r}")
    wait_for("the JPEG quality field to be back", lambda: app.is_enabled(quality))


run(flow)
