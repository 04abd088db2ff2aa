#!/usr/bin/env python3
"""A person turns a landscape photo a quarter to the right, selects all and copies: the
clipboard holds the portrait picture, as pixels and as the written file."""
import os

from atspi_app import check, run, wait_for
from oracles import clipboard, clipboard_file, clipboard_offers, image_size, make_photo


def flow(session, binary):
    app = session.launch(binary, make_photo(session.path("photo.jpg"), 800, 600))
    app.menu("Image", "Rotate 90° Right")
    app.menu("Edit", "Select All")
    app.wait_text("Output width", "600")
    app.wait_text("Output height", "800")
    app.menu("Edit", "Copy")
    wait_for("image/png on the clipboard", lambda: clipboard_offers("image/png"))
    pasted = session.path("pasted.png")
    with open(pasted, "wb") as out:
        out.write(clipboard("image/png") or b"")
    copied = clipboard_file()
    check(os.path.isfile(copied), f"the copied file {copied} does not exist")
    found = {"the clipboard's image/png": (image_size(pasted), "PNG 600x800"),
             "the copied file": (image_size(copied), "JPEG 600x800")}
    for what, (size, expected) in found.items():
        check(size == expected, f"{what} is {size}, not {expected}")
    undo = app.menu("Edit", "Undo", prefix=True)
    check(undo == "Undo Crop Selection", f"the Undo item reads {undo!r}")
    undo = app.menu("Edit", "Undo", prefix=True)
    check(undo == "Undo Rotate", f"the Undo item reads {undo!r}")


run(flow)
