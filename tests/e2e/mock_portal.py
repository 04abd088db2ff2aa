#!/usr/bin/env python3
"""A stand-in for the desktop's screenshot portal on a private session bus. It records each
request's options in RECORD (one JSON line each) and answers as told: "ok" with PICTURE's
uri, "cancel", or "fail"."""
import json
import os
import sys

from gi.repository import Gio, GLib

XML = """<node><interface name="org.freedesktop.portal.Screenshot">
<method name="Screenshot"><arg type="s" direction="in"/><arg type="a{sv}" direction="in"/>
<arg type="o" direction="out"/></method></interface></node>"""
ANSWERS = {"ok": 0, "cancel": 1, "fail": 2}


def main(answer, picture, record):
    loop = GLib.MainLoop()
    interface = Gio.DBusNodeInfo.new_for_xml(XML).interfaces[0]

    def called(bus, sender, path, _iface, _method, params, invocation):
        parent, options = params.unpack()
        with open(record, "a") as out:
            out.write(json.dumps({"parent": parent, **options}) + "\n")
        handle = ("/org/freedesktop/portal/desktop/request/" +
                  sender[1:].replace(".", "_") + "/" + options["handle_token"])
        invocation.return_value(GLib.Variant("(o)", (handle,)))
        results = {"uri": GLib.Variant("s", GLib.filename_to_uri(os.path.abspath(picture)))}
        GLib.timeout_add(100, lambda: bus.emit_signal(
            sender, handle, "org.freedesktop.portal.Request", "Response",
            GLib.Variant("(ua{sv})", (ANSWERS[answer], results if answer == "ok" else {}))))

    def acquired(bus, _name):
        bus.register_object("/org/freedesktop/portal/desktop", interface, called)

    Gio.bus_own_name(Gio.BusType.SESSION, "org.freedesktop.portal.Desktop",
                     Gio.BusNameOwnerFlags.NONE, acquired, None, lambda *_: loop.quit())
    loop.run()


if __name__ == "__main__":
    main(*sys.argv[1:4])
