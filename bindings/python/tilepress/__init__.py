"""Pages in Group 4 codes (ITU-T T.6), drawn in part or in whole, at any size, while they are decoded.

    import tilepress

    with tilepress.open("drawing.tif") as document:
        page = document[0]
        small = page.render(scale=0.1)                                      # numpy.asarray(small), small.image()
        part = page.render(rect=(0, 9000, 2000, 1000), size=(800, 400), mode="ink")

A page stays compressed: memory is its coded bytes and the picture. Pages may be used by any number of threads at once,
and the interpreter's lock is released while they are decoded.
"""

from tilepress._coding import encode
from tilepress._errors import (ArgumentError, CancelledError, Damage, DamagedError, Error, FormatError, LimitError,
                               NoMemoryError)
from tilepress._pages import Page, View, version
from tilepress._picture import Picture
from tilepress._tiff import Document, open

__all__ = ["ArgumentError", "CancelledError", "Damage", "DamagedError", "Document", "Error", "FormatError",
           "LimitError", "NoMemoryError", "Page", "Picture", "View", "encode", "open", "version"]
