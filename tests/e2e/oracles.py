"""What the end-to-end flows check from outside the application: test photos and image sizes
through ImageMagick, the clipboard through xclip, as another X client would read it."""
import os
import subprocess
import urllib.parse

from atspi_app import check, step, wait_for


def make_photo(path, width=2725, height=2225):
    """A photo-like JPEG: smooth shading, grain and a crisp edge, so scaling has real work."""
    mid_x, mid_y = width // 2, height // 2
    subprocess.run(["convert", "-seed", "7", "-size", f"{width // 5}x{height // 5}",
                    "plasma:fractal", "-blur", "0x3", "-resize", f"{width}x{height}!",
                    "-attenuate", "0.4", "+noise", "Gaussian",
                    "-fill", "none", "-stroke", "#202020", "-strokewidth", "3",
                    "-draw", f"circle {mid_x},{mid_y} {mid_x},{height // 6}",
                    "-quality", "90", path], check=True)
    return path


def image_size(path):
    """"FORMAT WxH" as ImageMagick reads the file."""
    result = subprocess.run(["identify", "-format", "%m %wx%h\n", path],
                            capture_output=True, text=True)
    check(result.returncode == 0, f"identify cannot read {path}: {result.stderr.strip()}")
    return result.stdout.splitlines()[0]


def clipboard(target):
    """The clipboard's content as `target` (a MIME type, or TARGETS); None if not offered."""
    result = subprocess.run(["xclip", "-selection", "clipboard", "-t", target, "-o"],
                            capture_output=True, timeout=10)
    return result.stdout if result.returncode == 0 else None


def clipboard_offers(target):
    return target.encode() in (clipboard("TARGETS") or b"").split()


def clipboard_file():
    """The local file that the clipboard's text/uri-list names first."""
    uri = (clipboard("text/uri-list") or b"").decode().splitlines()
    check(uri, "the clipboard names no file in text/uri-list")
    return urllib.parse.unquote(urllib.parse.urlparse(uri[0].strip()).path)


def jpeg_quality(path):
    """The quality ImageMagick reads back from a JPEG's quantisation tables."""
    result = subprocess.run(["identify", "-format", "%Q", path], capture_output=True, text=True)
    check(result.returncode == 0, f"identify cannot read {path}: {result.stderr.strip()}")
    return int(result.stdout.strip())


def size_text(count):
    """A byte count as the desktop reads it: binary units, bytes, KB, MB and GB."""
    for unit, digits, power in (("GB", 2, 3), ("MB", 1, 2), ("KB", 0, 1)):
        if count >= 1024 ** power:
            return f"{count / 1024 ** power:.{digits}f} {unit}"
    return f"{max(count, 0)} bytes"


def check_copied_output(session, size):
    """After Copy: the clipboard's picture and the file it names are both `size` ("WxH"), the
    picture as PNG and the file as the JPEG the output is written as."""
    wait_for("image/png on the clipboard", lambda: clipboard_offers("image/png"))
    pasted = session.path("pasted.png")
    with open(pasted, "wb") as out:
        out.write(clipboard("image/png") or b"")
    copied = clipboard_file()
    check(os.path.isfile(copied), f"the copied file {copied} does not exist")
    # Both forms are told, so that a failure shows which of them went wrong.
    found = {"the clipboard's image/png": (image_size(pasted), f"PNG {size}"),
             f"the copied file {copied}": (image_size(copied), f"JPEG {size}")}
    step("; ".join(f"{what}: {got}" for what, (got, _) in found.items()))
    check(all(got == want for got, want in found.values()),
          "; ".join(f"{what} is {got}, not {want}" for what, (got, want) in found.items()))
