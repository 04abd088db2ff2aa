#!/usr/bin/env python3
"""A person types an output width of 800 and saves: the file written is exactly that wide,
in the photo's proportions (2225 x 800 / 2725 = 653.2)."""
import os

from atspi_app import check, run, step, wait_for
from oracles import image_size, make_photo


def flow(session, binary):
    app = session.launch(binary, make_photo(session.path("photo.jpg")))
    app.menu("Edit", "Select All")
    app.commit("Output width", "800")
    app.wait_text("Output width", "800")
    app.wait_text("Output height", "653")

    target = session.path("typed-width.jpg")
    app.save_as(target)
    wait_for(f"{target} to be written", lambda: os.path.isfile(target))
    step(f"written: {image_size(target)}")
    check(image_size(target) == "JPEG 800x653",
          f"the saved file is {image_size(target)}, not JPEG 800x653")


run(flow)
