#!/usr/bin/env python3
"""A person picks the 4x6 ratio preset and drags a selection of any shape: the selection, as
the screen reader says it, and the output are 6 : 4 within a pixel, and so is the copy."""
import re

from atspi_app import check, run, step, wait_for
from oracles import check_copied_output, make_photo


def selection(app):
    """(width, height) of the selection the source view describes, or None."""
    found = re.match(r"Selection (\d+) × (\d+) pixels", app.named("Source image").description)
    return (int(found[1]), int(found[2])) if found else None


def six_by_four(size):
    wide, high = size
    return abs(wide * 4 - high * 6) <= 6


def flow(session, binary):
    app = session.launch(binary, make_photo(session.path("photo.jpg"), 1600, 1200))
    app.press_mnemonic("n", app.labelled("Constrain:", "ROLE_COMBO_BOX"))
    app.press(ord("4"))
    wait_for("4x6 to be chosen",
             lambda: app.labelled("Constrain:", "ROLE_COMBO_BOX").name == "4x6")
    app.drag("Source image", (0.15, 0.2), (0.55, 0.9))
    wait_for("a selection", lambda: selection(app) is not None)
    chosen = selection(app)
    output = (int(app.text("Output width")), int(app.text("Output height")))
    step(f"selection {chosen[0]}x{chosen[1]}, output {output[0]}x{output[1]}")
    check(six_by_four(chosen), f"the selection {chosen} is not 6 : 4")
    check(six_by_four(output), f"the output {output} is not 6 : 4")
    app.menu("Edit", "Copy")
    check_copied_output(session, f"{output[0]}x{output[1]}")


run(flow)
