// Pages for C# and the other .NET languages: compressed pages that are drawn at any size while they are decoded.

using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;
using Microsoft.Win32.SafeHandles;

/// <summary>The library's page, released when nobody holds it any more.</summary>
public sealed class TilepressPageHandle : SafeHandleZeroOrMinusOneIsInvalid
{
    TilepressPageHandle() : base(true) { }

    protected override bool ReleaseHandle()
    {
        Tilepress.tp_page_release(handle);
        return true;
    }
}

/// <summary>A failed call: its status, and where the page is damaged when that is why.</summary>
public sealed class TilepressException : Exception
{
    public int Status { get; private set; }
    public Tilepress.Damage? Damage { get; private set; }

    internal TilepressException(int status, Tilepress.Damage? damage)
        : base(Marshal.PtrToStringAnsi(Tilepress.tp_status_text(status)) +
               (damage.HasValue ? " (tile " + damage.Value.Tile + ", row " + damage.Value.Row + ")" : ""))
    {
        Status = status;
        Damage = damage;
    }
}

public enum TilepressMode : uint { Grey, Coverage, Ink, Nearest }
public enum TilepressFormat : uint { Bits, Grey8, Rgba, Bgra }
public enum TilepressOnDamage : uint { Fail, White, Keep }

/// <summary>A page, immutable: any number of threads may draw it at once. Ends with Dispose, or by itself.</summary>
public sealed class TilepressPage : IDisposable
{
    const int Records = 256;
    readonly TilepressPageHandle page;

    public int Width { get; private set; }
    public int Height { get; private set; }

    /// <summary>A page of coded tiles or strips in the byte order of files, row by row; null is a tile of paper. They
    /// are copied.</summary>
    /// <param name="tileWidth">In pixels; 0 is the page's, as pages in strips have it. Likewise tileHeight.</param>
    /// <param name="photometric">0 when coded black is ink, 1 when coded white is.</param>
    public TilepressPage(int width, int height, IList<byte[]> tiles, int tileWidth = 0, int tileHeight = 0,
        int fillOrder = 1, int photometric = 0, Tilepress.Limits limits = default(Tilepress.Limits))
    {
        var info = new Tilepress.PageInfo
        {
            Size = (uint)Marshal.SizeOf(typeof(Tilepress.PageInfo)), Width = checked((uint)width),
            Height = checked((uint)height), TileWidth = checked((uint)tileWidth), TileHeight = checked((uint)tileHeight),
            FillOrder = checked((uint)fillOrder), Photometric = checked((uint)photometric), Limits = limits
        };
        var coded = new Tilepress.Coded[tiles.Count];
        var pins = new List<GCHandle>();
        var empty = new byte[1];  // no bytes at an address: a damaged tile
        try
        {
            for (int k = 0; k < coded.Length; ++k)
            {
                if (tiles[k] == null) continue;
                var pin = GCHandle.Alloc(tiles[k].Length > 0 ? tiles[k] : empty, GCHandleType.Pinned);
                pins.Add(pin);
                coded[k].Data = pin.AddrOfPinnedObject();
                coded[k].Size = new UIntPtr((uint)tiles[k].Length);
            }
            Check(Tilepress.tp_page_open(ref info, coded, new UIntPtr((uint)coded.Length), out page), null);
        }
        finally
        {
            foreach (var pin in pins) pin.Free();
        }
        Width = width;
        Height = height;
    }

    public void Dispose() { page.Dispose(); }

    /// <summary>Lays the page out anew in memory so that every view costs what it shows. False: it is damaged and stays
    /// as it is.</summary>
    public bool Prepare()
    {
        var options = NewOptions(TilepressOnDamage.Fail, IntPtr.Zero);
        int status = Tilepress.tp_page_prepare(page, ref options);
        Check(status, null);
        return status == 0;
    }

    /// <summary>Decodes every row; what is wrong with each tile, at most 256 of them.</summary>
    public Tilepress.Damage[] Verify()
    {
        Tilepress.Damage[] found;
        Check(Call(TilepressOnDamage.Fail, (ref Tilepress.Options options) => Tilepress.tp_page_verify(page, ref options),
            out found), found);
        return found;
    }

    /// <summary>Draws the page, or the view's rectangle of it, into an array of its own: rows without padding.</summary>
    public byte[] Render(int outWidth, int outHeight, TilepressMode mode = TilepressMode.Grey,
        TilepressFormat format = TilepressFormat.Grey8, TilepressOnDamage onDamage = TilepressOnDamage.Fail)
    {
        return Render(new Tilepress.View { OutWidth = checked((uint)outWidth), OutHeight = checked((uint)outHeight),
            Mode = (uint)mode, Format = (uint)format }, onDamage);
    }

    /// <summary>The same for any view; Size, Pixels and Stride are filled in here.</summary>
    public byte[] Render(Tilepress.View view, TilepressOnDamage onDamage = TilepressOnDamage.Fail)
    {
        var pixels = new byte[checked(RowBytes(view) * view.OutHeight)];
        var pin = GCHandle.Alloc(pixels, GCHandleType.Pinned);
        try
        {
            view.Pixels = pin.AddrOfPinnedObject();
            view.Stride = new IntPtr(RowBytes(view));
            RenderInto(new[] { view }, onDamage);
        }
        finally
        {
            pin.Free();
        }
        return pixels;
    }

    /// <summary>Draws views into the caller's memory at Pixels, such as a bitmap's locked bits, decoding the page once
    /// for all of them. What was damaged and filled in. Spans: TilepressSpan.cs.</summary>
    public Tilepress.Damage[] RenderInto(Tilepress.View[] views, TilepressOnDamage onDamage = TilepressOnDamage.Fail)
    {
        for (int k = 0; k < views.Length; ++k) views[k].Size = (uint)Marshal.SizeOf(typeof(Tilepress.View));
        Tilepress.Damage[] found;
        Check(Call(onDamage, (ref Tilepress.Options options) =>
            Tilepress.tp_page_render(page, views, new UIntPtr((uint)views.Length), ref options), out found), found);
        return found;
    }

    /// <summary>Codes packed rows (1 is ink, the highest bit first) as one strip.</summary>
    public static byte[] Encode(byte[] rows, int width, int fillOrder = 1)
    {
        int rowBytes = checked(width + 7) / 8;
        if (width <= 0 || rows.Length == 0 || rows.Length % rowBytes != 0)
            throw new ArgumentException("rows are whole, and at least one");
        IntPtr encoder, data;
        UIntPtr size;
        Check(Tilepress.tp_encoder_open((uint)width, (uint)fillOrder, IntPtr.Zero, out encoder), null);
        try
        {
            Check(Tilepress.tp_encoder_add_bits(encoder, rows, new IntPtr(rowBytes), (uint)(rows.Length / rowBytes)), null);
            Check(Tilepress.tp_encoder_finish(encoder, out data, out size), null);
            var coded = new byte[checked((int)size.ToUInt64())];
            Marshal.Copy(data, coded, 0, coded.Length);
            return coded;
        }
        finally
        {
            Tilepress.tp_encoder_close(encoder);
        }
    }

    delegate int Walk(ref Tilepress.Options options);

    // A walk with room for records of damage.
    static int Call(TilepressOnDamage onDamage, Walk walk, out Tilepress.Damage[] found)
    {
        var records = new Tilepress.Damage[Records];
        var pin = GCHandle.Alloc(records, GCHandleType.Pinned);
        try
        {
            var options = NewOptions(onDamage, pin.AddrOfPinnedObject());
            int status = walk(ref options);
            found = new Tilepress.Damage[Math.Min(options.DamageCount, Records)];
            Array.Copy(records, found, found.Length);
            return status;
        }
        finally
        {
            pin.Free();
        }
    }

    static Tilepress.Options NewOptions(TilepressOnDamage onDamage, IntPtr records)
    {
        return new Tilepress.Options { Size = (uint)Marshal.SizeOf(typeof(Tilepress.Options)), OnDamage = (uint)onDamage,
            Damage = records, DamageCapacity = records == IntPtr.Zero ? 0u : Records };
    }

    internal static uint RowBytes(Tilepress.View view)
    {
        switch ((TilepressFormat)view.Format)
        {
            case TilepressFormat.Bits: return (view.OutWidth + 7) / 8;
            case TilepressFormat.Grey8: return view.OutWidth;
            default: return checked(4 * view.OutWidth);
        }
    }

    static void Check(int status, Tilepress.Damage[] found)
    {
        if (status >= 0) return;
        throw new TilepressException(status, found != null && found.Length > 0 ? found[0] : (Tilepress.Damage?)null);
    }
}
