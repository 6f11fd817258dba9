{ Tilepress's plain functions for Free Pascal and Delphi.

  Memory that the library is to keep or release comes from MemAllocate; what it
  returns goes back with MemFree. }
unit tilepress;

{$ifdef FPC}{$mode objfpc}{$endif}

interface

const
{$ifdef MSWINDOWS}
  LibraryName = 'tilepress.dll';
{$else}
  LibraryName = 'tilepress';
{$endif}

type
  TInt32 = LongInt;
  TUInt32 = LongWord;
  TSize = {$ifdef FPC}SizeUInt{$else}NativeUInt{$endif};
  PInt32 = ^TInt32;
  PUInt32 = ^TUInt32;
  PUInt16 = ^Word;
  PUInt8 = ^Byte;
  PPUInt8 = ^PUInt8;

  PColorMapEntry = ^TColorMapEntry;
  TColorMapEntry = record
    Red, Green, Blue: TInt32;
  end;

  PColorTable = ^TColorTable;
  TColorTable = record
    Capacity, Count, Maximum: TInt32;
    Entries: PColorMapEntry;
  end;

  PColorXfm = ^TColorXfm;
  PPColorXfm = ^PColorXfm;
  TColorXfm = record
    Key, Count: TInt32;
    Index: PInt32;
  end;

  PSysParms = ^TSysParms;
  TSysParms = record
    Reserved, ByteOrder: Word;
  end;

  PImgHandle = ^TImgHandle;
  PPImgHandle = ^PImgHandle;

  TImg1CreateOp = function(Image: PImgHandle; Width, Height, AlignBits: TUInt32; Data: Pointer): TUInt32; cdecl;
  TFreeOp = function(Where: PPImgHandle; Keep: Pointer): Pointer; cdecl;
  TRenderOp = function(Image: PImgHandle; Width, Height: TUInt32; Header: Pointer;
    Arg1, Arg2, AlignBits: TUInt32): PImgHandle; cdecl;
  TRotateOp = function(Image: PImgHandle; Degrees: Double): PImgHandle; cdecl;
  TMirrorOp = function(Image: PImgHandle; Direction: TInt32): PImgHandle; cdecl;
  TSubImageOp = function(Image: PImgHandle; Corners: PInt32): PImgHandle; cdecl;
  TCloneOp = function(Image: PImgHandle): PImgHandle; cdecl;

  { Create has the arguments of the image's type: cast it to TImg1CreateOp and the like. }
  TImgHandle = record
    ImageType: TUInt32;
    Header, Data: Pointer;
    Create: Pointer;
    Free: TFreeOp;
    Render: TRenderOp;
    Rotate: TRotateOp;
    Mirror: TMirrorOp;
    SubImage: TSubImageOp;
    Reserved, Convert, GetWidth, GetHeight, Serialize, Deserialize: Pointer;
    Clone: TCloneOp;
    RasOp1, RasOp2: Pointer;
  end;

  { Pages: see page.h. The unit tilepresspages wraps them. }
  TTpPage = Pointer;
  TTpReader = Pointer;
  TTpEncoder = Pointer;

  PTpLimits = ^TTpLimits;
  TTpLimits = record
    MaxPixels, MaxBytes: UInt64;
  end;

  PTpDamage = ^TTpDamage;
  TTpDamage = record
    Tile, Row: TUInt32;
    Position: UInt64;
    Kind, Column, Top: TUInt32;
  end;

  TTpProgress = function(User: Pointer; Done, Total: UInt64): TInt32; cdecl;

  PTpOptions = ^TTpOptions;
  TTpOptions = record
    Size, OnDamage: TUInt32;
    Limits: TTpLimits;
    Progress: TTpProgress;
    User: Pointer;
    Damage: PTpDamage;
    DamageCapacity, DamageCount: TUInt32;
  end;

  PTpCoded = ^TTpCoded;
  TTpCoded = record
    Data: Pointer;
    Size: TSize;
  end;

  PTpPageInfo = ^TTpPageInfo;
  TTpPageInfo = record
    Size, Width, Height, TileWidth, TileHeight, FillOrder, Photometric, Flags: TUInt32;
    Limits: TTpLimits;
  end;

  PTpView = ^TTpView;
  TTpView = record
    Size, Left, Top, Width, Height, OutWidth, OutHeight, Mode, Format, Orientation, Flags, Ink, Paper: TUInt32;
    Pixels: Pointer;
    Stride: {$ifdef FPC}PtrInt{$else}NativeInt{$endif};
  end;

function tp_version: TUInt32; cdecl; external LibraryName;
function tp_status_text(Status: TInt32): PAnsiChar; cdecl; external LibraryName;
function tp_alloc(Size: TSize): Pointer; cdecl; external LibraryName;
procedure tp_free(Block: Pointer); cdecl; external LibraryName;
function tp_page_open(Info: PTpPageInfo; Tiles: PTpCoded; Count: TSize; Page: PPointer): TInt32; cdecl;
  external LibraryName;
function tp_page_retain(Page: TTpPage): TTpPage; cdecl; external LibraryName;
procedure tp_page_release(Page: TTpPage); cdecl; external LibraryName;
function tp_page_describe(Page: TTpPage; Info: PTpPageInfo): TInt32; cdecl; external LibraryName;
function tp_page_memory(Page: TTpPage): UInt64; cdecl; external LibraryName;
function tp_page_prepare(Page: TTpPage; Options: PTpOptions): TInt32; cdecl; external LibraryName;
function tp_page_verify(Page: TTpPage; Options: PTpOptions): TInt32; cdecl; external LibraryName;
function tp_page_render(Page: TTpPage; Views: PTpView; Count: TSize; Options: PTpOptions): TInt32; cdecl;
  external LibraryName;
function tp_reader_open(Page: TTpPage; Left, Top, Width, Height: TUInt32; Options: PTpOptions;
  Reader: PPointer): TInt32; cdecl; external LibraryName;
function tp_reader_next(Reader: TTpReader; Changes: PPointer; Count: PUInt32): TInt32; cdecl; external LibraryName;
procedure tp_reader_close(Reader: TTpReader); cdecl; external LibraryName;
function tp_encoder_open(Width, FillOrder: TUInt32; Limits: PTpLimits; Encoder: PPointer): TInt32; cdecl;
  external LibraryName;
function tp_encoder_add_bits(Encoder: TTpEncoder; Rows: Pointer; Stride: {$ifdef FPC}PtrInt{$else}NativeInt{$endif};
  Count: TUInt32): TInt32; cdecl; external LibraryName;
function tp_encoder_add_changes(Encoder: TTpEncoder; Changes: PUInt32; Count: TUInt32): TInt32; cdecl;
  external LibraryName;
function tp_encoder_finish(Encoder: TTpEncoder; Data: PPointer; Size: Pointer): TInt32; cdecl; external LibraryName;
procedure tp_encoder_close(Encoder: TTpEncoder); cdecl; external LibraryName;

function CCITT_EnableG4Decode: TInt32; cdecl; external LibraryName;
procedure CCITT_DisableG4Decode; cdecl; external LibraryName;
procedure CCITT_EnableDetectChanges; cdecl; external LibraryName;
procedure CCITT_DisableDetectChanges; cdecl; external LibraryName;
procedure CCITT_EnableG4Encode; cdecl; external LibraryName;
procedure CCITT_DisableG4Encode; cdecl; external LibraryName;
function CCITT_G4Decode(ReferenceLine: PInt32; ReferenceCount, Width: TInt32; Data: PUInt16;
  BytePosition, BitPosition: PInt32; Reserved: PUInt8; CodingLine, CodingCount: PInt32;
  DataLength: TInt32): SmallInt; cdecl; external LibraryName;

function cit_enable_decode_gr4: SmallInt; cdecl; external LibraryName;
procedure cit_disable_decode_gr4; cdecl; external LibraryName;
function cit_decode_tiff_gr4(ReferenceLine: PInt32; ReferenceCount, Width: TInt32; Data: PUInt16;
  BytePosition, BitPosition: PInt32; Reserved: PUInt8; CodingLine, CodingCount: PInt32;
  DataLength: TInt32): SmallInt; cdecl; external LibraryName;
procedure cit_enable_detect_changes; cdecl; external LibraryName;
procedure cit_disable_detect_changes; cdecl; external LibraryName;
procedure cit_enable_detect_changes_tmp; cdecl; external LibraryName;
procedure cit_disable_detect_changes_tmp; cdecl; external LibraryName;
procedure cit_detect_changes(Width: TUInt32; Row: PUInt8; MaxChanges: TInt32; Changes, Count: PUInt32); cdecl;
  external LibraryName;
procedure cit_detect_changes_tmp(Width: TUInt32; Row: PUInt8; MaxChanges: TInt32; Changes, Count: PUInt32); cdecl;
  external LibraryName;
function cit_enable_encode_gr4: SmallInt; cdecl; external LibraryName;
procedure cit_disable_encode_gr4; cdecl; external LibraryName;
function cit_enable_encode_gr4_tmp: SmallInt; cdecl; external LibraryName;
procedure cit_disable_encode_gr4_tmp; cdecl; external LibraryName;
procedure cit_encode_gr4(ReferenceLine: PInt32; ReferenceCount: TInt32; CodingLine: PInt32; CodingCount: TInt32;
  Words: PUInt16; Bits: PInt32); cdecl; external LibraryName;
procedure cit_encode_gr4_tmp(ReferenceLine: PInt32; ReferenceCount: TInt32; CodingLine: PInt32; CodingCount: TInt32;
  Words: PUInt16; Bits: PInt32); cdecl; external LibraryName;
{ The rows need one byte more than they fill. }
function create_g4_tiff_strip(Rows: PUInt8; Output: PPUInt8; Width, BytesPerRow, RowCount: TInt32): TInt32; cdecl;
  external LibraryName;
function create_g4_tiff_strip_tmp(Rows: PUInt8; Output: PPUInt8; Width, BytesPerRow, RowCount: TInt32): TInt32; cdecl;
  external LibraryName;

function ImgNew(ImageType: TUInt32): PImgHandle; cdecl; external LibraryName;
function ImgGetWidth(Image: PImgHandle): TUInt32; cdecl; external LibraryName;
function ImgGetHeight(Image: PImgHandle): TUInt32; cdecl; external LibraryName;
function ImgSetDstRect(Image: PImgHandle; Corners: PInt32): PImgHandle; cdecl; external LibraryName;
function ImgSetRotation(Image: PImgHandle; Degrees: Double): PImgHandle; cdecl; external LibraryName;
function ImgSetMirFlag(Image: PImgHandle; Flag: TInt32): PImgHandle; cdecl; external LibraryName;
function ImgTIFFG4Free(Where: PPImgHandle; Keep: Pointer): Pointer; cdecl; external LibraryName;
function TiffG4Serialize(Image: PImgHandle; Buffer: PPointer; Size: PUInt32): TUInt32; cdecl; external LibraryName;
function TiffG4Deserialize(Image: PPImgHandle; Buffer: Pointer): TUInt32; cdecl; external LibraryName;
function Img1RasOp1(Image: PImgHandle; Desc: Pointer; Value: TUInt32): PImgHandle; cdecl; external LibraryName;
function Img8RasOp1(Image: PImgHandle; Desc: Pointer; Value: TUInt32): PImgHandle; cdecl; external LibraryName;
function Img24RasOp1(Image: PImgHandle; Desc: Pointer; Value: TUInt32): PImgHandle; cdecl; external LibraryName;
function Img32RasOp1(Image: PImgHandle; Desc: Pointer; Value: TUInt32): PImgHandle; cdecl; external LibraryName;
function Img1RasOp2(Source: PImgHandle; Desc: Pointer; Destination: PImgHandle): PImgHandle; cdecl; external LibraryName;
function Img8RasOp2(Source: PImgHandle; Desc: Pointer; Destination: PImgHandle): PImgHandle; cdecl; external LibraryName;
function Img24RasOp2(Source: PImgHandle; Desc: Pointer; Destination: PImgHandle): PImgHandle; cdecl; external LibraryName;
function Img32RasOp2(Source: PImgHandle; Desc: Pointer; Destination: PImgHandle): PImgHandle; cdecl; external LibraryName;
function Img24BitColorToPixRGB(Pixel: PUInt8; Color: TUInt32): PUInt8; cdecl; external LibraryName;
function create_reverse_byte_table: PUInt8; cdecl; external LibraryName;

function MemAllocate(Reserved: TInt32; Size: TSize; Flags: TInt32; Block: PPointer): TInt32; cdecl; external LibraryName;
function MemSetPointer(Reserved: TInt32; Block, Where: Pointer): TInt32; cdecl; external LibraryName;
function MemFree(Reserved: TInt32; Block: Pointer): TInt32; cdecl; external LibraryName;
function ColOpen(Count, Maximum: TInt32): PColorTable; cdecl; external LibraryName;
function ColGetClosestColor(Colour: PColorMapEntry; Table: PColorTable; Index: PInt32): TInt32; cdecl; external LibraryName;
function ColOpenXfm(Key: TInt32): PColorXfm; cdecl; external LibraryName;
function ColMapColors(Source, Target: PColorTable; Transform: PColorXfm): TInt32; cdecl; external LibraryName;
procedure ColCloseXfm(Transform: PPColorXfm); cdecl; external LibraryName;
procedure tra_swap_4(Word32: Pointer); cdecl; external LibraryName;
procedure tra_swap_2(Word16: Pointer); cdecl; external LibraryName;
function osh_get_sys_parms: PSysParms; cdecl; external LibraryName;

implementation

end.
