#!/usr/bin/env python3
"""A person opens File ▸ Photo Browser, finds a photo of their Pictures folder there and
chooses it with the keyboard: Marigold opens it."""
import os

from atspi_app import RETURN_KEYSYM, run, step, wait_for
from oracles import make_photo


def flow(session, binary):
    pictures = session.path("Pictures")
    os.makedirs(os.path.join(pictures, "trip"))
    make_photo(os.path.join(pictures, "trip", "beach.jpg"), 640, 480)
    with open(session.path("config/user-dirs.dirs"), "w") as dirs:
        dirs.write(f'XDG_PICTURES_DIR="{pictures}"\n')
    app = session.launch(binary)
    app.menu("File", "Photo Browser")
    browser = app.other_application("marigold-photos")
    photos = app.named("Photos", browser)
    photo = wait_for("beach.jpg in the browser",
                     lambda: next((item for item in photos if item.name == "beach.jpg"), None))
    step("choose beach.jpg and press Return")
    app.act(photo, "Toggle")
    wait_for("the photo to be chosen and the grid to have the focus",
             lambda: photo.getState().contains(app.role("STATE_SELECTED")) and
             photos.getState().contains(app.role("STATE_FOCUSED")))
    app.press(RETURN_KEYSYM)
    app.wait_text("Document name", "beach")


run(flow)
