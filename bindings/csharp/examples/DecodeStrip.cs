// A picture into a Group 4 strip and back.

using System;
using System.Runtime.InteropServices;

static class DecodeStrip
{
    const int Width = 16, RowBytes = Width / 8;

    static byte[] Encode(byte[] rows, int count)
    {
        var padded = new byte[rows.Length + 1];  // change detection borrows the byte after a row
        rows.CopyTo(padded, 0);
        IntPtr block;
        var coded = new byte[Tilepress.create_g4_tiff_strip(padded, out block, Width, RowBytes, count)];
        Marshal.Copy(block, coded, 0, coded.Length);
        Tilepress.MemFree(0, block);
        return coded;
    }

    static byte[] Decode(byte[] coded, int count)
    {
        var words = new ushort[(coded.Length + 1) / 2];
        for (int i = 0; i < coded.Length; ++i) words[i / 2] |= (ushort)(i % 2 == 0 ? coded[i] << 8 : coded[i]);
        var reference = new int[Width + 4];
        reference[1] = reference[2] = reference[3] = Width + 1;
        int elements = 4, bytePosition = 0, bitPosition = 1;
        var rows = new byte[count * RowBytes];
        for (int row = 0; row < count; ++row)
        {
            var coding = new int[Width + 4];
            if (Tilepress.cit_decode_tiff_gr4(reference, elements, Width, words, ref bytePosition, ref bitPosition,
                    IntPtr.Zero, coding, out elements, 2 * words.Length) != 0)
                throw new InvalidOperationException("the strip is damaged");
            for (int i = 1; coding[i] <= Width; i += 2)
                for (int x = coding[i] - 1; x < coding[i + 1] - 1; ++x)
                    rows[row * RowBytes + x / 8] |= (byte)(0x80 >> x % 8);
            reference = coding;
        }
        return rows;
    }

    static int Main()
    {
        byte[] rows = { 0x01, 0x80, 0x03, 0xC0, 0x07, 0xE0, 0x0F, 0xF0 };
        Tilepress.cit_enable_detect_changes();
        if (Tilepress.cit_enable_encode_gr4() == 0 || Tilepress.cit_enable_decode_gr4() == 0) return 1;
        byte[] coded = Encode(rows, rows.Length / RowBytes);
        bool same = BitConverter.ToString(Decode(coded, rows.Length / RowBytes)) == BitConverter.ToString(rows);
        Console.WriteLine("{0} bytes as {1}, {2}", rows.Length, coded.Length, same ? "and back" : "and not back");
        return same ? 0 : 1;
    }
}
