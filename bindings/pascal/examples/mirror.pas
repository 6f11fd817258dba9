{ A bilevel image as a handle: filled, mirrored, printed. }
program mirror;

{$ifdef FPC}{$mode objfpc}{$endif}

uses
  tilepress;

const
  Width = 8;
  Height = 4;
  Rows: array[0..Height - 1] of Byte = ($81, $42, $24, $18);

var
  Page, Turned: PImgHandle;
  Row, Column: Integer;
  Pixels: PUInt8;
  Good: Boolean;

begin
  Page := ImgNew(1);
  if (Page = nil) or (TImg1CreateOp(Page^.Create)(Page, Width, Height, 8, nil) = 0) then
    Halt(1);
  Move(Rows, Page^.Data^, SizeOf(Rows));
  Turned := Page^.Mirror(Page, 1);
  if Turned = nil then
    Halt(1);
  Good := True;
  Pixels := Turned^.Data;
  for Row := 0 to Height - 1 do
  begin
    Good := Good and (Pixels^ = Rows[Height - 1 - Row]);
    for Column := 0 to Width - 1 do
      if (Pixels^ and ($80 shr Column)) <> 0 then Write('#') else Write('.');
    WriteLn;
    Inc(Pixels);
  end;
  Turned^.Free(@Turned, nil);
  Page^.Free(@Page, nil);
  if not Good then
    Halt(1);
end.
