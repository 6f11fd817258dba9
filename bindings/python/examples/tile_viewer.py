"""The back end of a tile viewer: any 256 x 256 tile of a page, at any level, as PNG.

    python3 tile_viewer.py drawing.tif 8080                    serve http://localhost:8080/PAGE/LEVEL/COLUMN/ROW.png
    python3 tile_viewer.py drawing.tif 0/2/1/3.png >tile.png   one tile; level 0 is full size, each further one half
"""

import functools
import http.server
import io
import sys

import tilepress

SIDE = 256


@functools.lru_cache(maxsize=8)
def prepared(path, number):
    with tilepress.open(path, max_pixels=2**31) as document:
        page = document[number]
    page.prepare()  # so that a tile at the bottom costs no more than one at the top
    return page


def tile(page, level, column, row):
    """The tile's PNG, smaller at the right and bottom edges; IndexError past them."""
    side = SIDE << level
    left, top = column * side, row * side
    width, height = min(side, page.width - left), min(side, page.height - top)
    if width <= 0 or height <= 0:
        raise IndexError("no such tile")
    size = -(-width >> level) or 1, -(-height >> level) or 1
    picture = page.render(rect=(left, top, width, height), size=size, mode="coverage", on_damage="white")
    png = io.BytesIO()
    picture.image().save(png, "png")
    return png.getvalue()


def answer(path, request):
    number, level, column, row = map(int, request.strip("/").removesuffix(".png").split("/"))
    return tile(prepared(path, number), min(level, 24), column, row)


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        try:
            png = answer(sys.argv[1], self.path)
        except (IndexError, ValueError, tilepress.Error) as error:
            return self.send_error(404, str(error))
        self.send_response(200)
        self.send_header("Content-Type", "image/png")
        self.send_header("Content-Length", str(len(png)))
        self.end_headers()
        self.wfile.write(png)


if sys.argv[2].isdigit():
    http.server.ThreadingHTTPServer(("localhost", int(sys.argv[2])), Handler).serve_forever()
else:
    sys.stdout.buffer.write(answer(sys.argv[1], sys.argv[2]))
