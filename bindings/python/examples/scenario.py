"""What every language's package can do: code, open, draw, verify. The programs in C# and Pascal print the same."""

import tilepress

WIDTH, HEIGHT = 100, 60


def pattern():
    for y in range(HEIGHT):
        row = "".join("01"[(x // 5) * (y // 3) % 7 < 2] for x in range(WIDTH))
        yield int(row.ljust(104, "0"), 2).to_bytes(13, "big")


def main():
    rows = b"".join(pattern())
    coded = tilepress.encode(rows, WIDTH)
    page = tilepress.Page(WIDTH, HEIGHT, [coded])
    grey = page.render(size=(25, 15))
    checksum = sum((k + 1) * level for k, level in enumerate(grey.tobytes())) % 65536
    print(f"{len(rows)} bytes as {len(coded)}, {len(page.verify())} damaged tiles, grey {checksum}")
    print("the same" if page.render(format="bits").tobytes() == rows else "not the same")
    damaged = tilepress.Page(WIDTH, HEIGHT, [coded[:len(coded) // 2]])
    for damage in damaged.verify():
        print(f"tile {damage.tile}, row {damage.row}, kind {damage.kind.value}")
    try:
        damaged.render(size=(25, 15))
    except tilepress.DamagedError as error:
        print(f"refused: tile {error.damage.tile}, row {error.damage.row}")


main()
