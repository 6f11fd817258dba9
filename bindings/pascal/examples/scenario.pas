{ What every language's package can do: code, open, draw, verify. The programs in
  Python and C# print the same. }
program scenario;

{$ifdef FPC}{$mode objfpc}{$endif}

uses
  tilepress, tilepresspages;

const
  Width = 100;
  Height = 60;
  RowBytes = 13;

function Pattern: TTilepressBytes;
var
  X, Y: Integer;
begin
  Result := nil;
  SetLength(Result, Height * RowBytes);
  for Y := 0 to Height - 1 do
    for X := 0 to Width - 1 do
      if (X div 5) * (Y div 3) mod 7 < 2 then
        Result[Y * RowBytes + X div 8] := Result[Y * RowBytes + X div 8] or ($80 shr (X mod 8));
end;

function OneTile(const Coded: TTilepressBytes; Count: Integer): TTilepressTiles;
begin
  Result := nil;
  SetLength(Result, 1);
  Result[0] := Copy(Coded, 0, Count);
end;

procedure DrawGood(const Rows, Coded: TTilepressBytes);
var
  Page: TTilepressPage;
  Grey: TTilepressBytes;
  K: Integer;
  Checksum: Int64;
begin
  Page := TTilepressPage.Create(Width, Height, OneTile(Coded, Length(Coded)));
  try
    Grey := Page.Render(25, 15);
    Checksum := 0;
    for K := 0 to High(Grey) do
      Checksum := Checksum + Int64(K + 1) * Grey[K];
    WriteLn(Length(Rows), ' bytes as ', Length(Coded), ', ', Length(Page.Verify), ' damaged tiles, grey ',
      Checksum mod 65536);
    if CompareByte(Page.Render(Width, Height, tmGrey, tfBits)[0], Rows[0], Length(Rows)) = 0 then
      WriteLn('the same')
    else
      WriteLn('not the same');
  finally
    Page.Free;
  end;
end;

procedure DrawDamaged(const Coded: TTilepressBytes);
var
  Page: TTilepressPage;
  Damage: TTpDamage;
begin
  Page := TTilepressPage.Create(Width, Height, OneTile(Coded, Length(Coded) div 2));
  try
    for Damage in Page.Verify do
      WriteLn('tile ', Damage.Tile, ', row ', Damage.Row, ', kind ', Damage.Kind);
    try
      Page.Render(25, 15);
    except
      on E: ETilepress do
        WriteLn('refused: tile ', E.Damage[0].Tile, ', row ', E.Damage[0].Row);
    end;
  finally
    Page.Free;
  end;
end;

var
  Rows, Coded: TTilepressBytes;

begin
  Rows := Pattern;
  Coded := TTilepressPage.Encode(Rows, Width);
  DrawGood(Rows, Coded);
  DrawDamaged(Coded);
end.
