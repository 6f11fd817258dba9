"""The package as it is installed: pages of files beside Pillow's decoder, pictures, damage, coding."""

import concurrent.futures
import os
import pathlib
import subprocess
import sys

import numpy
import pytest
import tilepress
from PIL import Image

HERE = pathlib.Path(__file__).resolve().parent
SAMPLES = sorted(pathlib.Path(os.environ["TILEPRESS_SAMPLES"]).glob("*.tif"))
TEXT = next(path for path in SAMPLES if path.name == "text.tif")


@pytest.fixture
def page():
    with tilepress.open(TEXT) as document:
        return document[0]


def ink_of(path, number):
    """A page by libtiff: true where ink is."""
    with Image.open(path) as image:
        image.seek(number)
        return ~numpy.asarray(image.convert("1"))


def bits(picture):
    return numpy.unpackbits(numpy.asarray(picture), axis=1)[:, :picture.width].astype(bool)


def damaged(page_of=TEXT):
    """The text page in two strips, the second of which is cut off and goes on with nonsense."""
    ink = ink_of(page_of, 0)
    upper, lower = tilepress.encode(ink[:1200]), tilepress.encode(ink[1200:])
    return tilepress.Page(ink.shape[1], ink.shape[0], [upper, lower[:4000] + bytes(range(16))], tile_height=1200)


@pytest.mark.parametrize("path", SAMPLES, ids=lambda path: path.stem)
def test_every_pixel_is_that_of_libtiff(path):
    with tilepress.open(path) as document:
        for number, page in enumerate(document):
            assert numpy.array_equal(bits(page.render(format="bits", orientation=1)), ink_of(path, number))
            assert page.verify() == []


def test_a_document_is_a_sequence():
    pages = next(path for path in SAMPLES if path.name == "pages.tif")
    with tilepress.open(pages) as document:
        assert len(document) == len(list(document)) == len(document[:]) == 4
        assert document[-1].size == document[3].size and document[1:3][1].size == document[2].size
        assert document[0].resolution == (100, 100)
        with pytest.raises(IndexError):
            document[4]


def test_other_packages_share_the_pixels(page):
    for form, shape in (("grey", (40, 30)), ("rgba", (40, 30, 4)), ("bits", (40, 4))):
        picture = page.render(size=(30, 40), format=form)
        array, image = numpy.asarray(picture), picture.image()
        assert array.shape == memoryview(picture).shape == shape and picture.size == image.size == (30, 40)
        first = numpy.asarray(image).flat[0]
        array[...] = 255 - array[...]
        assert numpy.shares_memory(numpy.asarray(picture), array)
        assert (numpy.asarray(image).flat[0] != first) == (form != "bits")  # which have no place in a PIL image
    assert numpy.array_equal(numpy.asarray(Image.fromarray(page.render(0.1))), page.render(0.1))


@pytest.mark.parametrize("name, expected", [
    ("scale", (165, 234)), ("quarter", (234, 165)), ("both", (7, 9)), ("part", (50, 25)), ("none", (1653, 2339))])
def test_sizes(page, name, expected):
    asked = {"scale": {"scale": 0.1}, "quarter": {"scale": 0.1, "orientation": 6}, "both": {"size": (7, 9)},
             "part": {"rect": (10, 20, 100, 50), "scale": 0.5}, "none": {}}[name]
    assert page.render(**asked).size == expected


def test_views_of_one_walk_are_those_of_many(page):
    views = [tilepress.View(0.1), tilepress.View(0.25, mode="ink", format="bits"),
             tilepress.View(rect=(100, 1800, 400, 300), mode="coverage", orientation=8, invert=True),
             tilepress.View(size=(50, 70), mode="nearest", format="bgra", ink=0xFF102030, paper=0x80FFEEDD)]
    asked = [{name: getattr(view, name) for name in view.__dataclass_fields__} for view in views]
    for picture, one in zip(page.render_views(views), asked):
        assert bytes(picture) == bytes(page.render(**one))
    rgba, bgra = (numpy.asarray(page.render(0.1, format=form, ink=0xFF102030)) for form in ("rgba", "bgra"))
    assert numpy.array_equal(rgba[:, :, [2, 1, 0, 3]], bgra) and (rgba[:, :, 3] == 255).all()
    assert numpy.array_equal(numpy.asarray(page.render(0.1, format="rgba"))[:, :, 1], page.render(0.1))


def test_threads_share_a_page(page):
    expected = bytes(page.render(0.2))
    with concurrent.futures.ThreadPoolExecutor(4) as threads:
        prepared = threads.submit(page.prepare)
        pictures = list(threads.map(lambda _: bytes(page.render(0.2)), range(8)))
    assert prepared.result() and pictures == [expected] * 8 and page.memory > 0


def test_damage_has_a_place():
    page = damaged()
    found = page.verify()
    assert len(found) == 1 and found[0].tile == 1 and found[0].top == 1200 + found[0].row
    with pytest.raises(tilepress.DamagedError) as error:
        page.render(0.1)
    assert error.value.damage == found[0] and f"tile 1, row {found[0].row}" in str(error.value)
    filled = page.render(format="bits", on_damage="white")
    good, expected = found[0].top, ink_of(TEXT, 0)
    assert filled.damage == tuple(found) and not page.prepare()
    assert numpy.array_equal(bits(filled)[:good], expected[:good]) and not bits(filled)[good:].any()


def test_files_that_are_something_else(tmp_path):
    grey = Image.new("L", (20, 10), 90)
    grey.save(tmp_path / "mixed.tif", save_all=True, append_images=[Image.open(TEXT)], compression=None)
    (tmp_path / "text.txt").write_text("no picture")
    (tmp_path / "cut.tif").write_bytes(TEXT.read_bytes()[:200])
    with tilepress.open(tmp_path / "mixed.tif") as document, pytest.raises(tilepress.FormatError, match="page 0"):
        document[0]
    for name, kind in (("text.txt", tilepress.FormatError), ("missing.tif", FileNotFoundError)):
        with pytest.raises(kind):
            tilepress.open(tmp_path / name)
    with pytest.raises(tilepress.Error):
        with tilepress.open(tmp_path / "cut.tif") as document:
            document[0].render(0.1)


@pytest.mark.parametrize("width", [1, 7, 8, 9, 31, 64, 70])
@pytest.mark.parametrize("fill_order", [1, 2])
def test_what_is_coded_comes_back(width, fill_order):
    ink = numpy.random.default_rng(width).random((20, width)) < 0.4
    coded = tilepress.encode(ink, fill_order=fill_order)
    page = tilepress.Page(width, 20, [coded], fill_order=fill_order)
    picture = page.render(format="bits")
    assert numpy.array_equal(bits(picture), ink)
    for same in (picture, picture.image()):
        assert tilepress.encode(same, fill_order=fill_order) == coded
    assert tilepress.encode(bytes(picture), width, fill_order=fill_order) == coded


@pytest.mark.parametrize("error, call", [
    (tilepress.ArgumentError, lambda page: page.render(rect=(0, 0, 1654, 1))),
    (tilepress.ArgumentError, lambda page: page.render(rect=(-1, 0, 10, 1))),
    (tilepress.ArgumentError, lambda page: page.render(size=(0, 9))),
    (tilepress.ArgumentError, lambda page: page.render(mode="best")),
    (tilepress.ArgumentError, lambda page: page.render(format="cmyk")),
    (tilepress.ArgumentError, lambda page: page.render(orientation=9)),
    (tilepress.ArgumentError, lambda page: tilepress.Page(10, 10, [])),
    (tilepress.ArgumentError, lambda page: tilepress.Page(10, -10, [b""])),
    (tilepress.ArgumentError, lambda page: tilepress.encode(b"123", 16)),
    (tilepress.ArgumentError, lambda page: tilepress.encode(numpy.zeros((3, 3)))),
    (tilepress.LimitError, lambda page: page.render(max_pixels=100)),
    (tilepress.LimitError, lambda page: tilepress.Page(1000, 1000, [b""], max_pixels=999999)),
    (tilepress.CancelledError, lambda page: page.render(progress=lambda done, total: done > 0)),
    (ZeroDivisionError, lambda page: page.render(progress=lambda done, total: 1 / 0)),
])
def test_errors(page, error, call):
    with pytest.raises(error):
        call(page)


def test_examples(tmp_path):
    def run(name, *arguments):
        return subprocess.run([sys.executable, HERE.parent / "examples" / name, *arguments], check=True,
                              stdout=subprocess.PIPE).stdout

    assert run("contact_sheet.py", tmp_path / "sheet.png", *SAMPLES).startswith(b"10 pages, ")
    assert Image.open(tmp_path / "sheet.png").size == (1510, 510)
    (tmp_path / "tile.png").write_bytes(run("tile_viewer.py", TEXT, "0/2/1/2.png"))
    with tilepress.open(TEXT) as document:
        expected = document[0].render(rect=(1024, 2048, 629, 291), size=(158, 73), mode="coverage")
    assert numpy.array_equal(numpy.asarray(Image.open(tmp_path / "tile.png")), expected)
    assert b".......##......." in run("decode_strip.py")
