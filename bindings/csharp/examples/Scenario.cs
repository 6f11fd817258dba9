// What every language's package can do: code, open, draw, verify. The programs in Python and Pascal print the same.

using System;
using System.Linq;

static class Scenario
{
    const int Width = 100, Height = 60, RowBytes = 13;

    static byte[] Pattern()
    {
        var rows = new byte[Height * RowBytes];
        for (int y = 0; y < Height; ++y)
            for (int x = 0; x < Width; ++x)
                if (x / 5 * (y / 3) % 7 < 2) rows[y * RowBytes + x / 8] |= (byte)(0x80 >> x % 8);
        return rows;
    }

    static void Main()
    {
        byte[] rows = Pattern(), coded = TilepressPage.Encode(rows, Width);
        using (var page = new TilepressPage(Width, Height, new[] { coded }))
        {
            var grey = new byte[25 * 15];
            page.RenderInto(new Tilepress.View { OutWidth = 25, OutHeight = 15, Format = (uint)TilepressFormat.Grey8 },
                new Span<byte>(grey));
            if (!grey.SequenceEqual(page.Render(25, 15))) throw new InvalidOperationException("the span differs");
            long checksum = grey.Select((level, k) => (long)(k + 1) * level).Sum() % 65536;
            Console.WriteLine("{0} bytes as {1}, {2} damaged tiles, grey {3}", rows.Length, coded.Length,
                page.Verify().Length, checksum);
            var same = page.Render(Width, Height, TilepressMode.Grey, TilepressFormat.Bits).SequenceEqual(rows);
            Console.WriteLine(same ? "the same" : "not the same");
        }
        using (var damaged = new TilepressPage(Width, Height, new[] { coded.Take(coded.Length / 2).ToArray() }))
        {
            foreach (var damage in damaged.Verify())
                Console.WriteLine("tile {0}, row {1}, kind {2}", damage.Tile, damage.Row, damage.Kind);
            try
            {
                damaged.Render(25, 15);
            }
            catch (TilepressException error)
            {
                Console.WriteLine("refused: tile {0}, row {1}", error.Damage.Value.Tile, error.Damage.Value.Row);
            }
        }
    }
}
