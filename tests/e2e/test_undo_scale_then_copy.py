#!/usr/bin/env python3
"""A person scales a photo to 50 %, undoes that and copies: the clipboard holds the photo at
its full size, both as pixels and as the written file."""
from atspi_app import check, run
from oracles import check_copied_output, make_photo


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
    check_copied_output(session, "2725x2225")


run(flow)
