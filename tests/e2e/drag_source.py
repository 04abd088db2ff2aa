#!/usr/bin/env python3
"""A stand-in for a file manager: a GTK window whose one button drags the paths given on the
command line as a uri-list, the way file managers offer files to other applications."""
import sys

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, GLib, Gtk  # noqa: E402


def main(title, paths):
    uris = [GLib.filename_to_uri(path, None) for path in paths]
    window = Gtk.Window(title=title)
    window.set_default_size(160, 120)
    window.move(0, 0)
    button = Gtk.Button(label="drag")
    button.drag_source_set(Gdk.ModifierType.BUTTON1_MASK, [], Gdk.DragAction.LINK |
                           Gdk.DragAction.COPY | Gdk.DragAction.MOVE)
    button.drag_source_add_uri_targets()
    button.connect("drag-data-get", lambda _w, _c, data, _i, _t: data.set_uris(uris))
    window.add(button)
    window.connect("destroy", Gtk.main_quit)
    window.show_all()
    Gtk.main()


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2:])
