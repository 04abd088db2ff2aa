#!/usr/bin/env python3
"""A person drags a selection, types an output width of 800 and saves: the file written is
exactly that wide, and as high as the field says."""
import os

from atspi_app import check, run, step, wait_for
from oracles import image_size, make_photo


def flow(session, binary):
    app = session.launch(binary, make_photo(session.path("photo.jpg")))
    # An odd selection, so that its edges fall between pixels.
    app.drag("Source image", (0.137, 0.211), (0.871, 0.794))
    wait_for("a selection", lambda: app.text("Output width") not in ("", "0"))
    app.commit("Output width", "800")
    app.wait_text("Output width", "800")
    height = app.text("Output height")

    target = session.path("typed-width.jpg")
    app.save_as(target)
    wait_for(f"{target} to be written", lambda: os.path.isfile(target))
    step(f"written: {image_size(target)}")
    check(image_size(target) == f"JPEG 800x{height}",
          f"the saved file is {image_size(target)}, not JPEG 800x{height}")


run(flow)
