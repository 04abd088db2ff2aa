#!/usr/bin/env python3
"""A person drags a folder from the file manager onto the first destination well, then sends
the output there with Ctrl+Alt+1: the save dialog opens in that folder, and Save writes the
picture into it. The well dragged onto the third moves there; dragged out of the drawer, it
is cleared, and so is its entry in File ▸ Send To."""
import os

from atspi_app import ALT_KEYCODE, CONTROL_KEYCODE, check, run, step, wait_for
from oracles import image_size, make_photo


def entries(submenu):
    return [item.name for menu in submenu for item in menu if item.name]


def flow(session, binary):
    app = session.launch(binary, make_photo(session.path("photo.jpg"), 800, 600))
    app.menu("Edit", "Select All")
    web = session.path("web.site")
    os.mkdir(web)
    well = app.named("Destination 1")
    app.drop_files(session, [web], well)
    wait_for(lambda: f"the well to show web.site; it says {well.description!r}",
             lambda: well.description == "web.site")

    app.chord([CONTROL_KEYCODE, ALT_KEYCODE], ord("1"), "Ctrl+Alt+1")
    dialog = app.top_level("Save", app.role("ROLE_DIALOG"))
    app.act(app.find("Save", app.role("ROLE_PUSH_BUTTON"), dialog))
    saved = os.path.join(web, "photo.jpg")
    wait_for(f"{saved} to be written", lambda: os.path.isfile(saved))
    step(f"saved {image_size(saved)}")
    check(image_size(saved) == "JPEG 800x600", f"the saved picture is {image_size(saved)}")

    third = app.named("Destination 3")
    app.drag_onto(well, third)
    wait_for("the third well to hold web.site and the first to be empty",
             lambda: third.description == "web.site" and well.description.startswith("Empty"))
    send_to = app.named("Send To", app.find("File", app.role("ROLE_MENU_ITEM")))
    wait_for("Send To to list the moved well",
             lambda: entries(send_to) ==
             ["Save in web.site", "Copy to clipboard"])
    app.drag("Destination 3", (0.5, 0.5), (-6.0, 0.5))
    wait_for("the third well to be cleared", lambda: third.description.startswith("Empty"))
    wait_for("Send To to list no well", lambda: entries(send_to) ==
             ["Copy to clipboard"])


run(flow)
