#!/usr/bin/env python3
"""A person picks the output format, the JPEG quality and a size limit from the window and
reads the size of the file before saving: each save writes that format, exactly as large as
the label says, and a limit no quality can meet is announced before any save."""
import os

from atspi_app import DOWN_KEYSYM, UP_KEYSYM, check, run, step, wait_for
from oracles import image_size, jpeg_quality, make_photo, size_text


def flow(session, binary):
    app = session.launch(binary, make_photo(session.path("photo.jpg"), 1600, 1200))
    app.menu("Edit", "Select All")
    label = app.find("Output file size", app.role("ROLE_LABEL"))
    quality = app.field("JPEG quality number")

    def pick_format(key, times):
        app.press_mnemonic("o", app.labelled("Format:", "ROLE_COMBO_BOX"))
        for _ in range(times):
            app.press(key)

    def save_and_check(name, kind, limit=None):
        wait_for("the live file size", lambda: label.description)
        target = session.path(name)
        app.save_as(target)
        wait_for(f"{target} to be written", lambda: os.path.isfile(target))
        written = os.path.getsize(target)
        # Read once the save is done: the label then stands for the settings it was made with.
        shown = label.description
        step(f"{name}: {image_size(target)}, {written} bytes; the label reads {shown!r}")
        check(image_size(target).startswith(kind), f"{name} is {image_size(target)}")
        expected = size_text(written)
        if limit:
            expected += f" at quality {jpeg_quality(target)}"
            check(written < limit * 1024, f"{name} has {written} bytes, over {limit} KB")
        check(shown == expected, f"the label reads {shown!r}; the file is {expected!r}")

    pick_format(DOWN_KEYSYM, 1)
    wait_for("the quality to be switched off", lambda: not app.is_enabled(quality))
    save_and_check("out.png", "PNG")
    pick_format(DOWN_KEYSYM, 2)
    save_and_check("out.gif", "GIF")

    pick_format(UP_KEYSYM, 3)
    wait_for("the quality to be back", lambda: app.is_enabled(quality))
    app.commit("JPEG quality number", "40")
    app.act(app.find("Limit file size", app.role("ROLE_CHECK_BOX")), "Toggle")
    attention = app.top_level("Attention", app.role("ROLE_ALERT"))
    app.act(app.find("OK", app.role("ROLE_PUSH_BUTTON"), attention))
    app.commit("File size limit in KB", "50")
    save_and_check("limited.jpg", "JPEG", limit=50)

    app.commit("File size limit in KB", "10")
    unreachable = "File Size Limit Too Low: unable to keep file under 10 KB"
    wait_for(lambda: f"the label to read {unreachable!r}; it reads {label.description!r}",
             lambda: label.description == unreachable)


run(flow)
