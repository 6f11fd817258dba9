// Pages drawn into spans: a file of its own, for compilers that know Span and may compile unsafe code.

using System;

public static class TilepressSpan
{
    /// <summary>Draws the view into the caller's memory, rows without padding; Size, Pixels and Stride are filled in
    /// here. What was damaged and filled in.</summary>
    public static unsafe Tilepress.Damage[] RenderInto(this TilepressPage page, Tilepress.View view, Span<byte> pixels,
        TilepressOnDamage onDamage = TilepressOnDamage.Fail)
    {
        uint rowBytes = TilepressPage.RowBytes(view);
        if ((ulong)pixels.Length < (ulong)rowBytes * view.OutHeight)
            throw new ArgumentException("fewer bytes than the picture has");
        fixed (byte* first = &pixels.GetPinnableReference())
        {
            view.Pixels = new IntPtr(first);
            view.Stride = new IntPtr(rowBytes);
            return page.RenderInto(new[] { view }, onDamage);
        }
    }
}
