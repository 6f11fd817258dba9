"""How much longer a tenth of a page takes through the Python package than by the plain C call alone.

    PYTHONPATH=bindings/python TILEPRESS_LIBRARY=build/native-release/libtilepress.so \\
        python3 bench/python_call.py samples/text.tif

Both draw the same page in turn; the C call's records and pixels are made beforehand, and ctypes makes it, which takes
about a microsecond. Exits with 1 where the median of the ratios is above 1.05 or the pixels differ.
"""

import ctypes
import statistics
import sys
import time

import tilepress
from tilepress import plain

with tilepress.open(sys.argv[1]) as document:
    page = document[0]
width, height = (max(1, round(side * 0.1)) for side in page.size)
pixels = ctypes.create_string_buffer(width * height)
view = (plain.ViewRecord * 1)()
view[0] = plain.ViewRecord(ctypes.sizeof(plain.ViewRecord), 0, 0, 0, 0, width, height, 0, 1, 1, 0, 0, 0,
                           ctypes.addressof(pixels), width)
draw = plain.library().tp_page_render


def seconds(call):
    start = time.thread_time()
    call()
    return time.thread_time() - start


def by_c():
    draw(page._handle, view, 1, None)


def by_python():
    page.render(0.1, orientation=1)


same = page.render(0.1, orientation=1).tobytes() == (by_c(), pixels.raw)[1]
rounds = [(seconds(by_c), seconds(by_python)) if k % 2 else (seconds(by_python), seconds(by_c))[::-1]
          for k in range(1000)]
ratio = statistics.median(python / c for c, python in rounds)
c, python = (statistics.median(times) * 1e6 for times in zip(*rounds))
print(f"{page.width} x {page.height} to {width} x {height}: C {c:.1f} us, Python {python:.1f} us, ratio {ratio:.3f}")
sys.exit(not same or ratio > 1.05)
