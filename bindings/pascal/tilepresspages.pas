{ Pages for Free Pascal and Delphi: compressed pages that are drawn at any size
  while they are decoded. }
unit tilepresspages;

{$ifdef FPC}{$mode objfpc}{$endif}

interface

uses
  SysUtils, tilepress;

type
  TTilepressMode = (tmGrey, tmCoverage, tmInk, tmNearest);
  TTilepressFormat = (tfBits, tfGrey8, tfRgba, tfBgra);
  TTilepressOnDamage = (tdFail, tdWhite, tdKeep);
  TTilepressBytes = array of Byte;
  TTilepressTiles = array of TTilepressBytes;
  TTilepressDamage = array of TTpDamage;

  { A failed call: its status, and where the page is damaged when that is why. }
  ETilepress = class(Exception)
  public
    Status: TInt32;
    Damage: TTilepressDamage;
    constructor CreateFor(AStatus: TInt32; const ADamage: TTilepressDamage);
  end;

  { A page, immutable: any number of threads may draw it at once. }
  TTilepressPage = class
  private
    FPage: TTpPage;
    FWidth, FHeight: TUInt32;
    class procedure Check(Status: TInt32; const Damage: TTilepressDamage);
    procedure Prepare(out Options: TTpOptions; var Records: TTilepressDamage; OnDamage: TTilepressOnDamage);
  public
    { A page of coded tiles or strips in the byte order of files, row by row. They are copied. A TileWidth or
      TileHeight of 0 is the page's; Photometric is 0 when coded black is ink, 1 when coded white is. }
    constructor Create(AWidth, AHeight: TUInt32; const Tiles: TTilepressTiles; TileWidth: TUInt32 = 0;
      TileHeight: TUInt32 = 0; FillOrder: TUInt32 = 1; Photometric: TUInt32 = 0);
    destructor Destroy; override;
    { Draws the page into an array of its own: rows without padding. }
    function Render(OutWidth, OutHeight: TUInt32; Mode: TTilepressMode = tmGrey; Format: TTilepressFormat = tfGrey8;
      OnDamage: TTilepressOnDamage = tdFail): TTilepressBytes;
    { Draws a view into the caller's memory at Pixels, which has Stride; Size is filled in here. What was damaged and
      filled in. }
    function RenderInto(View: TTpView; OnDamage: TTilepressOnDamage = tdFail): TTilepressDamage;
    { Decodes every row; what is wrong with each tile, at most 256 of them. }
    function Verify: TTilepressDamage;
    { Codes packed rows (1 is ink, the highest bit first) as one strip. }
    class function Encode(const Rows: TTilepressBytes; RowWidth: TUInt32; FillOrder: TUInt32 = 1): TTilepressBytes;
    property Width: TUInt32 read FWidth;
    property Height: TUInt32 read FHeight;
  end;

implementation

const
  RecordsAtMost = 256;

constructor ETilepress.CreateFor(AStatus: TInt32; const ADamage: TTilepressDamage);
begin
  inherited Create(string(tp_status_text(AStatus)));
  Status := AStatus;
  Damage := ADamage;
end;

class procedure TTilepressPage.Check(Status: TInt32; const Damage: TTilepressDamage);
begin
  if Status < 0 then
    raise ETilepress.CreateFor(Status, Damage);
end;

constructor TTilepressPage.Create(AWidth, AHeight: TUInt32; const Tiles: TTilepressTiles; TileWidth, TileHeight,
  FillOrder, Photometric: TUInt32);
var
  Info: TTpPageInfo;
  Coded: array of TTpCoded;
  K: Integer;
begin
  inherited Create;
  FillChar(Info, SizeOf(Info), 0);
  Info.Size := SizeOf(Info);
  Info.Width := AWidth;
  Info.Height := AHeight;
  Info.TileWidth := TileWidth;
  Info.TileHeight := TileHeight;
  Info.FillOrder := FillOrder;
  Info.Photometric := Photometric;
  SetLength(Coded, Length(Tiles));
  for K := 0 to High(Tiles) do
  begin
    Coded[K].Data := Pointer(Tiles[K]);  { nil, and paper, for an empty one }
    Coded[K].Size := Length(Tiles[K]);
  end;
  Check(tp_page_open(@Info, Pointer(Coded), Length(Coded), @FPage), nil);
  FWidth := AWidth;
  FHeight := AHeight;
end;

destructor TTilepressPage.Destroy;
begin
  tp_page_release(FPage);
  inherited Destroy;
end;

procedure TTilepressPage.Prepare(out Options: TTpOptions; var Records: TTilepressDamage; OnDamage: TTilepressOnDamage);
begin
  SetLength(Records, RecordsAtMost);
  FillChar(Options, SizeOf(Options), 0);
  Options.Size := SizeOf(Options);
  Options.OnDamage := Ord(OnDamage);
  Options.Damage := Pointer(Records);
  Options.DamageCapacity := RecordsAtMost;
end;

function TTilepressPage.RenderInto(View: TTpView; OnDamage: TTilepressOnDamage): TTilepressDamage;
var
  Options: TTpOptions;
  Status: TInt32;
begin
  Result := nil;
  Prepare(Options, Result, OnDamage);
  View.Size := SizeOf(View);
  Status := tp_page_render(FPage, @View, 1, @Options);
  if Options.DamageCount < RecordsAtMost then
    SetLength(Result, Options.DamageCount);
  Check(Status, Result);
end;

function TTilepressPage.Render(OutWidth, OutHeight: TUInt32; Mode: TTilepressMode; Format: TTilepressFormat;
  OnDamage: TTilepressOnDamage): TTilepressBytes;
var
  View: TTpView;
begin
  FillChar(View, SizeOf(View), 0);
  View.OutWidth := OutWidth;
  View.OutHeight := OutHeight;
  View.Mode := Ord(Mode);
  View.Format := Ord(Format);
  case Format of
    tfBits: View.Stride := (OutWidth + 7) div 8;
    tfGrey8: View.Stride := OutWidth;
  else
    View.Stride := 4 * OutWidth;
  end;
  Result := nil;
  SetLength(Result, View.Stride * OutHeight);
  View.Pixels := Pointer(Result);
  RenderInto(View, OnDamage);
end;

function TTilepressPage.Verify: TTilepressDamage;
var
  Options: TTpOptions;
begin
  Result := nil;
  Prepare(Options, Result, tdFail);
  Check(tp_page_verify(FPage, @Options), nil);
  if Options.DamageCount < RecordsAtMost then
    SetLength(Result, Options.DamageCount);
end;

class function TTilepressPage.Encode(const Rows: TTilepressBytes; RowWidth: TUInt32; FillOrder: TUInt32): TTilepressBytes;
var
  Encoder: TTpEncoder;
  Data: Pointer;
  Size: TSize;
  RowBytes: TUInt32;
begin
  Result := nil;
  RowBytes := (RowWidth + 7) div 8;
  if (RowBytes = 0) or (Length(Rows) = 0) or (TUInt32(Length(Rows)) mod RowBytes <> 0) then
    raise EArgumentException.Create('rows are whole, and at least one');
  Check(tp_encoder_open(RowWidth, FillOrder, nil, @Encoder), nil);
  try
    Check(tp_encoder_add_bits(Encoder, Pointer(Rows), RowBytes, TUInt32(Length(Rows)) div RowBytes), nil);
    Check(tp_encoder_finish(Encoder, @Data, @Size), nil);
    SetLength(Result, Size);
    Move(Data^, Pointer(Result)^, Size);
  finally
    tp_encoder_close(Encoder);
  end;
end;

end.
