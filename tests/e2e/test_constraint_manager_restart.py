#!/usr/bin/env python3
"""A person adds a size preset in the constraint manager, names and sizes it by keyboard,
drags it to the top of its table and confirms: after a restart the pop-up lists it first
among the sizes, and choosing it holds the output to its width."""
from atspi_app import RETURN_KEYSYM, TAB_KEYSYM, check, run, step, wait_for
from oracles import make_photo


def items(combo):
    """The pop-up's items in order, separators left out."""
    return [item.name for menu in combo for item in menu if item.name]


def first_cells(table):
    cells = table.queryTable()
    return [cells.getAccessibleAt(row, 0).name for row in range(cells.nRows)]


def flow(session, binary):
    photo = make_photo(session.path("photo.jpg"), 1600, 1200)
    app = session.launch(binary, photo)
    app.menu("Image", "Manage Constraints…")
    dialog = app.top_level("Manage Constraints", app.role("ROLE_DIALOG"))
    sizes = app.find("Size presets", app.role("ROLE_TABLE"), dialog)
    app.act(app.find("Add size", app.role("ROLE_PUSH_BUTTON"), dialog))
    wait_for("the new row", lambda: first_cells(sizes) == ["640x480", "320x240", "Untitled"])

    # The new name is open for editing with its text selected: typing replaces it, Tab
    # moves on to the width, Return ends the edit and leaves the dialog open.
    step("type the name, Tab, the width, Return")
    app.type_keys("Banner")
    app.press(TAB_KEYSYM)
    app.type_keys("800")
    app.press(RETURN_KEYSYM)
    wait_for("the edited row", lambda: first_cells(sizes)[2] == "Banner" and
             sizes.queryTable().getAccessibleAt(2, 1).name == "800")
    check(dialog.getState().contains(app.role("STATE_SHOWING")), "Return closed the dialog")

    cells = sizes.queryTable()
    app.drag_onto(cells.getAccessibleAt(2, 0), cells.getAccessibleAt(0, 0))
    wait_for(lambda: f"Banner on top; the rows read {first_cells(sizes)}",
             lambda: first_cells(sizes) == ["Banner", "640x480", "320x240"])
    app.act(app.find("OK", app.role("ROLE_PUSH_BUTTON"), dialog))
    wait_for("the dialog to close", lambda: not dialog.getState().contains(app.role("STATE_SHOWING")))
    app.quit()

    app = session.launch(binary, photo)
    combo = app.labelled("Constrain:", "ROLE_COMBO_BOX")
    listed = items(combo)
    step(f"the pop-up lists {listed}")
    check(listed[listed.index("Custom Ratio") + 1:listed.index("Custom Size")] ==
          ["Banner", "640x480", "320x240"], f"the sizes are not Banner, 640x480, 320x240: {listed}")
    app.press_mnemonic("n", combo)
    app.press(ord("B"))
    wait_for("Banner to be chosen",
             lambda: app.labelled("Constrain:", "ROLE_COMBO_BOX").name == "Banner")
    app.drag("Source image", (0.3, 0.2), (0.7, 0.9))
    app.wait_text("Output width", "800")


run(flow)
