#!/usr/bin/env python3
"""A person scales a photo to 50 %, undoes that and copies: the clipboard holds the photo at
its full size, both as pixels and as the written file."""
import os

from atspi_app import check, run, step, wait_for
from oracles import clipboard, clipboard_file, clipboard_offers, image_size, make_photo


def flow(session, binary):
    app = session.launch(binary, make_photo(session.path("photo.jpg")))
    app.menu("Edit", "Select All")
    app.commit("Scale percent", "50")
    app.wait_text("Output width", "1363")
    app.wait_text("Output height", "1113")

    undo = app.menu("Edit", "Undo", prefix=True)
    check(undo == "Undo Size Change", f"the Undo item reads {undo!r}")
    app.wait_text("Output width", "2725")
    app.wait_text("Output height", "2225")

    app.menu("Edit", "Copy")
    wait_for("image/png on the clipboard", lambda: clipboard_offers("image/png"))
    pasted = session.path("pasted.png")
    with open(pasted, "wb") as out:
        out.write(clipboard("image/png") or b"")
    copied = clipboard_file()
    check(os.path.isfile(copied), f"the copied file {copied} does not exist")
    # Both forms are told, so that a failure shows which of them went wrong.
    found = {"the clipboard's image/png": (image_size(pasted), "PNG 2725x2225"),
             f"the copied file {copied}": (image_size(copied), "JPEG 2725x2225")}
    step("; ".join(f"{what}: {size}" for what, (size, _) in found.items()))
    check(all(size == want for size, want in found.values()),
          "; ".join(f"{what} is {size}, not {want}" for what, (size, want) in found.items()))


run(flow)
