"""The pages of TIFF files as thumbnails on one sheet.

    python3 contact_sheet.py sheet.png scans.tif more.tif
"""

import sys

import tilepress
from PIL import Image

CELL, GAP, COLUMNS = 240, 10, 6


def thumbnails(paths):
    for path in paths:
        with tilepress.open(path) as document:
            for page in document:
                scale = min(1, CELL / max(page.size))
                yield page.render(scale, on_damage="white").image()


def main(target, *paths):
    cells = list(thumbnails(paths))
    rows = -(-len(cells) // COLUMNS)
    pitch = CELL + GAP
    sheet = Image.new("L", (COLUMNS * pitch + GAP, rows * pitch + GAP), 160)
    for k, cell in enumerate(cells):
        left, top = GAP + k % COLUMNS * pitch, GAP + k // COLUMNS * pitch
        sheet.paste(cell, (left + (CELL - cell.width) // 2, top + (CELL - cell.height) // 2))
    sheet.save(target)
    print(f"{len(cells)} pages, {sheet.width} x {sheet.height}")


main(*sys.argv[1:])
