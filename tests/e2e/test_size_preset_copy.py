#!/usr/bin/env python3
"""A person picks the 640x480 size preset, drags a selection and copies: the picture on the
clipboard is exactly 640 pixels wide, whatever the drag."""
from atspi_app import check, run, step, wait_for
from oracles import check_copied_output, make_photo


def flow(session, binary):
    app = session.launch(binary, make_photo(session.path("photo.jpg"), 1600, 1200))
    # Typing picks the item that starts with what is typed, as in any pop-up.
    app.press_mnemonic("n", app.labelled("Constrain:", "ROLE_COMBO_BOX"))
    app.press(ord("6"))
    app.drag("Source image", (0.2, 0.2), (0.8, 0.7))
    wait_for("640x480 to be chosen",
             lambda: app.labelled("Constrain:", "ROLE_COMBO_BOX").name == "640x480")
    wait_for("a selection", lambda: app.text("Output width") == "640")
    height = int(app.text("Output height"))
    step(f"output {640}x{height}")
    check(abs(height - 480) <= 1, f"the output is 640 x {height}, not 640 x 480 within a pixel")
    app.menu("Edit", "Copy")
    check_copied_output(session, f"640x{height}")


run(flow)
