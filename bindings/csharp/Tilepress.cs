// Tilepress's plain functions for C# and the other .NET languages.
//
// Memory that the library is to
// keep or release comes from MemAllocate; what it returns goes back with MemFree.

using System;
using System.Runtime.InteropServices;

public static class Tilepress
{
    const string Library = "tilepress";  // tilepress.dll, libtilepress.so
    const CallingConvention Plain = CallingConvention.Cdecl;

    [StructLayout(LayoutKind.Sequential)]
    public struct ColorMapEntry { public int Red, Green, Blue; }

    [StructLayout(LayoutKind.Sequential)]
    public struct ColorTable { public int Capacity, Count, Maximum; public IntPtr Entries; }

    [StructLayout(LayoutKind.Sequential)]
    public struct ColorXfm { public int Key, Count; public IntPtr Index; }

    [StructLayout(LayoutKind.Sequential)]
    public struct SysParms { public ushort Reserved, ByteOrder; }

    /// <summary>What an image handle points to. The operations are addresses: make them callable with
    /// Marshal.GetDelegateForFunctionPointer and a delegate type of theirs.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct ImgHandle
    {
        public uint Type;
        public IntPtr Header, Data;
        public IntPtr Create, Free, Render, Rotate, Mirror, SubImage, Reserved, Convert, GetWidth, GetHeight,
            Serialize, Deserialize, Clone, RasOp1, RasOp2;
    }

    [UnmanagedFunctionPointer(Plain)]
    public delegate uint Img1CreateOp(IntPtr image, uint width, uint height, uint alignBits, IntPtr data);
    [UnmanagedFunctionPointer(Plain)]
    public delegate IntPtr FreeOp(ref IntPtr image, IntPtr keep);
    [UnmanagedFunctionPointer(Plain)]
    public delegate IntPtr RotateOp(IntPtr image, double degrees);
    [UnmanagedFunctionPointer(Plain)]
    public delegate IntPtr MirrorOp(IntPtr image, int direction);

    // Pages: see page.h. TilepressPage wraps them.
    [StructLayout(LayoutKind.Sequential)]
    public struct Limits { public ulong MaxPixels, MaxBytes; }

    [StructLayout(LayoutKind.Sequential)]
    public struct Damage
    {
        public uint Tile, Row;
        public ulong Byte;
        public uint Kind, Column, Top;
    }

    [UnmanagedFunctionPointer(Plain)]
    public delegate int Progress(IntPtr user, ulong done, ulong total);

    [StructLayout(LayoutKind.Sequential)]
    public struct Options
    {
        public uint Size, OnDamage;
        public Limits Limits;
        public Progress Progress;
        public IntPtr User, Damage;
        public uint DamageCapacity, DamageCount;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct Coded { public IntPtr Data; public UIntPtr Size; }

    [StructLayout(LayoutKind.Sequential)]
    public struct PageInfo
    {
        public uint Size, Width, Height, TileWidth, TileHeight, FillOrder, Photometric, Flags;
        public Limits Limits;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct View
    {
        public uint Size, Left, Top, Width, Height, OutWidth, OutHeight, Mode, Format, Orientation, Flags, Ink, Paper;
        public IntPtr Pixels, Stride;
    }

    [DllImport(Library, CallingConvention = Plain)] public static extern uint tp_version();
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr tp_status_text(int status);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr tp_alloc(UIntPtr size);
    [DllImport(Library, CallingConvention = Plain)] public static extern void tp_free(IntPtr block);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern int tp_page_open(ref PageInfo info, [In] Coded[] tiles, UIntPtr count, out TilepressPageHandle page);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr tp_page_retain(TilepressPageHandle page);
    [DllImport(Library, CallingConvention = Plain)] public static extern void tp_page_release(IntPtr page);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern int tp_page_describe(TilepressPageHandle page, ref PageInfo info);
    [DllImport(Library, CallingConvention = Plain)] public static extern ulong tp_page_memory(TilepressPageHandle page);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern int tp_page_prepare(TilepressPageHandle page, ref Options options);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern int tp_page_verify(TilepressPageHandle page, ref Options options);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern int tp_page_render(TilepressPageHandle page, [In] View[] views, UIntPtr count, ref Options options);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern int tp_reader_open(TilepressPageHandle page, uint left, uint top, uint width, uint height,
        IntPtr options, out IntPtr reader);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern int tp_reader_next(IntPtr reader, out IntPtr changes, out uint count);
    [DllImport(Library, CallingConvention = Plain)] public static extern void tp_reader_close(IntPtr reader);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern int tp_encoder_open(uint width, uint fillOrder, IntPtr limits, out IntPtr encoder);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern int tp_encoder_add_bits(IntPtr encoder, byte[] rows, IntPtr stride, uint count);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern int tp_encoder_add_changes(IntPtr encoder, [In] uint[] changes, uint count);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern int tp_encoder_finish(IntPtr encoder, out IntPtr data, out UIntPtr size);
    [DllImport(Library, CallingConvention = Plain)] public static extern void tp_encoder_close(IntPtr encoder);

    [DllImport(Library, CallingConvention = Plain)] public static extern int CCITT_EnableG4Decode();
    [DllImport(Library, CallingConvention = Plain)] public static extern void CCITT_DisableG4Decode();
    [DllImport(Library, CallingConvention = Plain)] public static extern void CCITT_EnableDetectChanges();
    [DllImport(Library, CallingConvention = Plain)] public static extern void CCITT_DisableDetectChanges();
    [DllImport(Library, CallingConvention = Plain)] public static extern void CCITT_EnableG4Encode();
    [DllImport(Library, CallingConvention = Plain)] public static extern void CCITT_DisableG4Encode();
    [DllImport(Library, CallingConvention = Plain)]
    public static extern short CCITT_G4Decode([In] int[] referenceLine, int referenceCount, int width, [In] ushort[] data,
        ref int bytePosition, ref int bitPosition, IntPtr reserved, [Out] int[] codingLine, out int codingCount, int dataLength);

    [DllImport(Library, CallingConvention = Plain)] public static extern short cit_enable_decode_gr4();
    [DllImport(Library, CallingConvention = Plain)] public static extern void cit_disable_decode_gr4();
    [DllImport(Library, CallingConvention = Plain)]
    public static extern short cit_decode_tiff_gr4([In] int[] referenceLine, int referenceCount, int width, [In] ushort[] data,
        ref int bytePosition, ref int bitPosition, IntPtr reserved, [Out] int[] codingLine, out int codingCount, int dataLength);
    [DllImport(Library, CallingConvention = Plain)] public static extern void cit_enable_detect_changes();
    [DllImport(Library, CallingConvention = Plain)] public static extern void cit_disable_detect_changes();
    [DllImport(Library, CallingConvention = Plain)] public static extern void cit_enable_detect_changes_tmp();
    [DllImport(Library, CallingConvention = Plain)] public static extern void cit_disable_detect_changes_tmp();
    [DllImport(Library, CallingConvention = Plain)]
    public static extern void cit_detect_changes(uint width, byte[] row, int maxChanges, [Out] uint[] changes, out uint count);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern void cit_detect_changes_tmp(uint width, byte[] row, int maxChanges, [Out] uint[] changes, out uint count);
    [DllImport(Library, CallingConvention = Plain)] public static extern short cit_enable_encode_gr4();
    [DllImport(Library, CallingConvention = Plain)] public static extern void cit_disable_encode_gr4();
    [DllImport(Library, CallingConvention = Plain)] public static extern short cit_enable_encode_gr4_tmp();
    [DllImport(Library, CallingConvention = Plain)] public static extern void cit_disable_encode_gr4_tmp();
    [DllImport(Library, CallingConvention = Plain)]
    public static extern void cit_encode_gr4([In] int[] referenceLine, int referenceCount, [In] int[] codingLine,
        int codingCount, [Out] ushort[] words, out int bits);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern void cit_encode_gr4_tmp([In] int[] referenceLine, int referenceCount, [In] int[] codingLine,
        int codingCount, [Out] ushort[] words, out int bits);
    // The rows need one byte more than they fill.
    [DllImport(Library, CallingConvention = Plain)]
    public static extern int create_g4_tiff_strip(byte[] rows, out IntPtr output, int width, int bytesPerRow, int rowCount);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern int create_g4_tiff_strip_tmp(byte[] rows, out IntPtr output, int width, int bytesPerRow, int rowCount);

    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr ImgNew(uint type);
    [DllImport(Library, CallingConvention = Plain)] public static extern uint ImgGetWidth(IntPtr image);
    [DllImport(Library, CallingConvention = Plain)] public static extern uint ImgGetHeight(IntPtr image);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr ImgSetDstRect(IntPtr image, [In] int[] corners);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr ImgSetRotation(IntPtr image, double degrees);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr ImgSetMirFlag(IntPtr image, int flag);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr ImgTIFFG4Free(ref IntPtr image, IntPtr keep);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern uint TiffG4Serialize(IntPtr image, out IntPtr buffer, out uint size);
    [DllImport(Library, CallingConvention = Plain)] public static extern uint TiffG4Deserialize(out IntPtr image, IntPtr buffer);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr Img1RasOp1(IntPtr image, IntPtr desc, uint value);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr Img8RasOp1(IntPtr image, IntPtr desc, uint value);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr Img24RasOp1(IntPtr image, IntPtr desc, uint value);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr Img32RasOp1(IntPtr image, IntPtr desc, uint value);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern IntPtr Img1RasOp2(IntPtr source, IntPtr desc, IntPtr destination);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern IntPtr Img8RasOp2(IntPtr source, IntPtr desc, IntPtr destination);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern IntPtr Img24RasOp2(IntPtr source, IntPtr desc, IntPtr destination);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern IntPtr Img32RasOp2(IntPtr source, IntPtr desc, IntPtr destination);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr Img24BitColorToPixRGB(IntPtr pixel, uint color);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr create_reverse_byte_table();

    [DllImport(Library, CallingConvention = Plain)]
    public static extern int MemAllocate(int reserved, UIntPtr size, int flags, out IntPtr block);
    [DllImport(Library, CallingConvention = Plain)] public static extern int MemSetPointer(int reserved, IntPtr block, IntPtr where);
    [DllImport(Library, CallingConvention = Plain)] public static extern int MemFree(int reserved, IntPtr block);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr ColOpen(int count, int maximum);
    [DllImport(Library, CallingConvention = Plain)]
    public static extern int ColGetClosestColor(ref ColorMapEntry colour, IntPtr table, out int index);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr ColOpenXfm(int key);
    [DllImport(Library, CallingConvention = Plain)] public static extern int ColMapColors(IntPtr source, IntPtr target, IntPtr transform);
    [DllImport(Library, CallingConvention = Plain)] public static extern void ColCloseXfm(ref IntPtr transform);
    [DllImport(Library, CallingConvention = Plain)] public static extern void tra_swap_4(IntPtr word32);
    [DllImport(Library, CallingConvention = Plain)] public static extern void tra_swap_2(IntPtr word16);
    [DllImport(Library, CallingConvention = Plain)] public static extern IntPtr osh_get_sys_parms();
}
