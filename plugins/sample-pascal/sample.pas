{ A whole plug-in in Pascal: a decoder of VSA files, which plugins/sample/README.md describes. }
library sample;

{$ifdef fpc}{$mode delphi}{$endif}

uses
  vorlund_plugin;

const
  HeaderSize = 16;
  MaxChannels = 8;
  Audio: TVorlundId = (words: ($47A8ECCB, $40364B9F, $A014B125, $721626DF));

type
  THeader = array[0..HeaderSize - 1] of Byte;

  { A decoder at work. The library makes and frees the block. }
  PState = ^TState;
  TState = record
    input: PVorlundInput;
    { Of the samples, and the next one to read, in bytes. }
    length: Int64;
    position: Int64;
  end;

function Load32(const header: THeader; at: Integer): LongWord;
begin
  Result := header[at] or LongWord(header[at + 1]) shl 8 or LongWord(header[at + 2]) shl 16
    or LongWord(header[at + 3]) shl 24;
end;

{ Reads the header, however little the stream delivers at a time. }
function ReadHeader(input: PVorlundInput; var header: THeader): LongInt;
var
  done, count: LongWord;
begin
  done := 0;
  while done < HeaderSize do
  begin
    count := 0;
    Result := input.read(input, @header[done], HeaderSize - done, count);
    if Result <> VORLUND_PLUGIN_OK then
      Exit;
    if count = 0 then
      Exit(VORLUND_PLUGIN_OTHER_DATA);
    Inc(done, count);
  end;
  Result := VORLUND_PLUGIN_OK;
  if (header[0] <> Ord('V')) or (header[1] <> Ord('S')) or (header[2] <> Ord('A')) or (header[3] <> Ord('1')) then
    Result := VORLUND_PLUGIN_OTHER_DATA;
end;

procedure NoteNumber(input: PVorlundInput; name: PAnsiChar; value: Int64);
begin
  input.note_value(input, name, @value);
end;

function RecogniseVsa(decoder: PVorlundDecoder; input: PVorlundInput): LongInt;
  {$ifdef windows}stdcall{$else}cdecl{$endif};
var
  header: THeader;
begin
  if input.has_positions = 0 then
    Exit(VORLUND_PLUGIN_OTHER_DATA);
  Result := ReadHeader(input, header);
end;

function OpenVsa(decoder: PVorlundDecoder; input: PVorlundInput; opened: PVorlundOpened): LongInt;
  {$ifdef windows}stdcall{$else}cdecl{$endif};
var
  header: THeader;
  state: PState;
  length: Int64;
begin
  state := opened.instance;
  Result := ReadHeader(input, header);
  if Result = VORLUND_PLUGIN_OK then
    Result := input.length(input, length);
  if Result <> VORLUND_PLUGIN_OK then
    Exit;
  input.note_container(input, 'VSA');
  if (header[4] < 1) or (header[4] > MaxChannels) or ((header[5] <> 8) and (header[5] <> 16)) or (header[6] <> 0)
    or (header[7] <> 0) or (Load32(header, 8) = 0) then
  begin
    { Who asks why finds these beside the reason. }
    NoteNumber(input, 'channels', header[4]);
    NoteNumber(input, 'bits', header[5]);
    input.explain(input, 'Invalid VSA header');
    Exit(VORLUND_PLUGIN_DAMAGED);
  end;
  opened.format.audio.id := Audio;
  opened.format.audio.size := SizeOf(TVorlundAudio);
  if header[5] = 8 then
    opened.format.audio.sample_format := VORLUND_PLUGIN_SAMPLES_8
  else
    opened.format.audio.sample_format := VORLUND_PLUGIN_SAMPLES_16;
  opened.format.audio.channels := header[4];
  opened.format.audio.samples_per_sec := Load32(header, 8);
  { What the header declares, as far as the file has it. }
  state.input := input;
  state.length := Int64(Load32(header, 12)) * header[4] * (header[5] div 8);
  if state.length > length - HeaderSize then
    state.length := length - HeaderSize;
  opened.length := state.length;
end;

function ReadVsa(instance: Pointer; buffer: Pointer; size: LongWord; count: PLongWord): LongInt;
  {$ifdef windows}stdcall{$else}cdecl{$endif};
var
  state: PState;
begin
  state := instance;
  if state.length - state.position < size then
    size := state.length - state.position;
  Result := state.input.read(state.input, buffer, size, count^);
  if Result = VORLUND_PLUGIN_OK then
    Inc(state.position, count^);
end;

function SeekVsa(instance: Pointer; position: PInt64): LongInt; {$ifdef windows}stdcall{$else}cdecl{$endif};
var
  state: PState;
  place: Int64;
begin
  state := instance;
  state.position := position^;
  place := position^ + HeaderSize;
  Result := state.input.seek(state.input, @place);
end;

procedure CloseVsa(instance: Pointer); {$ifdef windows}stdcall{$else}cdecl{$endif};
begin
end;

const
  Decoder: TVorlundDecoder = (size: SizeOf(TVorlundDecoder); instance_size: SizeOf(TState);
    class_id: (words: ($91D4E7B0, $3C5A4F62, $B807139E, $D6F25A84)); class_name: 'sample_pascal::CDecoder';
    source_format: (words: (0, 0, 0, 0)); result_format: (words: ($47A8ECCB, $40364B9F, $A014B125, $721626DF));
    recognise: RecogniseVsa; open: OpenVsa; read: ReadVsa; seek: SeekVsa; close: CloseVsa);
  Decoders: array[0..0] of Pointer = (@Decoder);
  Table: TVorlundTable = (size: SizeOf(TVorlundTable); version: VORLUND_PLUGIN_TABLE_VERSION; decoder_count: 1;
    device_count: 0; decoders: @Decoders; devices: nil);

{ A function works in compilers that export no data, too. }
function GetTable: PVorlundTable; {$ifdef windows}stdcall{$else}cdecl; public name 'vorlund_get_plugin_v1'{$endif};
begin
  Result := @Table;
end;

function VrlInitPlugin: Boolean; cdecl; {$ifndef windows}public name 'VrlInitPlugin';{$endif}
begin
  Result := True;
end;

procedure VrlClosePlugin; cdecl; {$ifndef windows}public name 'VrlClosePlugin';{$endif}
begin
end;

{$ifdef windows}
exports
  VrlInitPlugin name '?VrlInitPlugin@@YA_NXZ',
  VrlClosePlugin name '?VrlClosePlugin@@YAXXZ',
  GetTable name 'vorlund_get_plugin_v1';
{$endif}

begin
end.
