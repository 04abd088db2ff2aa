#!/usr/bin/env python3
"""A person turns a landscape photo a quarter to the right, selects all and copies: the
clipboard holds the portrait picture, as pixels and as the written file."""
from atspi_app import check, run
from oracles import check_copied_output, make_photo


def flow(session, binary):
    app = session.launch(binary, make_photo(session.path("photo.jpg"), 800, 600))
    app.menu("Image", "Rotate 90° Right")
    app.menu("Edit", "Select All")
    app.wait_text("Output width", "600")
    app.wait_text("Output height", "800")
    app.menu("Edit", "Copy")
    check_copied_output(session, "600x800")
    undo = app.menu("Edit", "Undo", prefix=True)
    check(undo == "Undo Crop Selection", f"the Undo item reads {undo!r}")
    undo = app.menu("Edit", "Undo", prefix=True)
    check(undo == "Undo Rotate", f"the Undo item reads {undo!r}")


run(flow)
