#!/usr/bin/env python3
"""Draws the pointer pictures painted into timed captures that have no PNG of their own.

Run once from the repository root; the PNGs it writes are committed as resources.
'#' is black, '.' white, anything else transparent. Pictures drawn as black strokes get a
one-pixel white halo so they stay visible on dark and light screens alike.
"""
import struct
import zlib

ARROW = """
 #
 ##
 #.#
 #..#
 #...#
 #....#
 #.....#
 #......#
 #.......#
 #........#
 #.....#####
 #..#..#
 #.# #..#
 ##  #..#
 #    #..#
      #..#
       ##
"""

IBEAM = """

     ### ###
        #
        #
        #
        #
        #
        #
        #
        #
        #
        #
        #
        #
     ### ###
"""

POINTING_HAND = """
     ##
    #..#
    #..#
    #..#
    #..###
    #..#..##
    #..#..#.##
 ## #..#..#.#.#
#..##........#
#...#........#
 #...........#
  #..........#
  #.........#
   #........#
   #.......#
    #......#
    ########
"""

SIZE = 17


def grid(art):
    rows = art.split("\n")[1:SIZE + 1]
    rows += [""] * (SIZE - len(rows))
    return [list(row.ljust(SIZE)[:SIZE]) for row in rows]


def with_halo(cells):
    out = [row[:] for row in cells]
    for y in range(SIZE):
        for x in range(SIZE):
            if cells[y][x] != " ":
                continue
            near = [cells[j][i] for j in range(max(0, y - 1), min(SIZE, y + 2))
                    for i in range(max(0, x - 1), min(SIZE, x + 2))]
            if "#" in near:
                out[y][x] = "."
    return out


def png(cells, path):
    colours = {"#": b"\x00\x00\x00\xff", ".": b"\xff\xff\xff\xff"}
    raw = b"".join(b"\x00" + b"".join(colours.get(c, b"\x00\x00\x00\x00") for c in row)
                   for row in cells)

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    header = struct.pack(">IIBBBBB", SIZE, SIZE, 8, 6, 0, 0, 0)
    with open(path, "wb") as out:
        out.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
                  chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


png(grid(ARROW), "resources/cursors/cursor_arrow.png")
png(with_halo(grid(IBEAM)), "resources/cursors/cursor_ibeam.png")
png(grid(POINTING_HAND), "resources/cursors/cursor_pointing_hand.png")
