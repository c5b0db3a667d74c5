{ The client of msvc/client.c in Pascal. }
program client;

{$mode delphi}{$packrecords c}

const
  Library_ = 'vorlund-c';
  Frames = 100;
  Size_ = 44 + 2 * Frames;

type
  TReadCallback = function(user, buffer: Pointer; size: LongWord; count: PLongWord): LongInt; cdecl;
  TSeekCallback = function(user: Pointer; position: PInt64): LongInt; cdecl;
  TLengthCallback = function(user: Pointer; length: PInt64): LongInt; cdecl;
  TReleaseCallback = procedure(user: Pointer); cdecl;

  TStreamCallbacks = record
    size, reserved: LongWord;
    read: TReadCallback;
    seek: TSeekCallback;
    length: TLengthCallback;
    release: TReleaseCallback;
  end;

  TAudioFormat = record
    size, sample_format, channels, rate: LongWord;
  end;

  TError = record
    size: LongWord;
    code, exception_type, line: LongInt;
    system_code: LongWord;
    callback_code: LongInt;
    type_, method, file_, reason, cause, reserved: PAnsiChar;
  end;

  TSource = record
    bytes: array[0..Size_ - 1] of Byte;
    position: Int64;
    code, released: LongInt;
  end;
  PSource = ^TSource;

{ On 32-bit Windows stdcall takes the place of cdecl. }
function vorlund_version(lib: PLongInt; c_interface: PLongInt): LongInt; cdecl; external Library_;
function vorlund_open(flags: LongWord): LongInt; cdecl; external Library_;
function vorlund_close: LongInt; cdecl; external Library_;
function vorlund_release(handle: Pointer): LongInt; cdecl; external Library_;
function vorlund_handle_count(out count: LongWord): LongInt; cdecl; external Library_;
function vorlund_last_error(var error: TError): LongInt; cdecl; external Library_;
function vorlund_error_text(field: LongInt; text: PAnsiChar; room: LongWord; out length: LongWord): LongInt; cdecl;
  external Library_;
function vorlund_error_text16(field: LongInt; text: PWideChar; room: LongWord; out length: LongWord): LongInt; cdecl;
  external Library_;
function vorlund_stream_create(var callbacks: TStreamCallbacks; user: Pointer; format: Pointer;
  out stream: Pointer): LongInt; cdecl; external Library_;
function vorlund_decode_stream(source, wanted, options, report: Pointer; out stream: Pointer): LongInt; cdecl;
  external Library_;
function vorlund_decode_file(path: PAnsiChar; wanted, options, report: Pointer; out stream: Pointer): LongInt; cdecl;
  external Library_;
function vorlund_stream_audio_format(stream: Pointer; var format: TAudioFormat): LongInt; cdecl; external Library_;
function vorlund_stream_length(stream: Pointer; out length: Int64): LongInt; cdecl; external Library_;
function vorlund_stream_seek(stream: Pointer; position: Int64): LongInt; cdecl; external Library_;
function vorlund_stream_tell(stream: Pointer; out position: Int64): LongInt; cdecl; external Library_;
function vorlund_stream_seek_frame_ptr(stream: Pointer; var frame: QWord): LongInt; cdecl; external Library_;
function vorlund_stream_tell_frame(stream: Pointer; out frame: QWord): LongInt; cdecl; external Library_;
function vorlund_stream_read(stream, buffer: Pointer; size: LongWord; out count: LongWord): LongInt; cdecl;
  external Library_;
function vorlund_stream_read_int16(stream: Pointer; samples: PSmallInt; frames: LongWord;
  out count: LongWord): LongInt; cdecl; external Library_;

var
  input: TSource;
  failures: LongInt;

procedure Check(result, wanted: LongInt);
begin
  if result = wanted then
    Exit;
  Inc(failures);
  WriteLn('result ', result, ' ', wanted);
end;

procedure Put(at, value, count: Integer);
var
  i: Integer;
begin
  for i := 0 to count - 1 do
    input.bytes[at + i] := Byte(value shr (8 * i));
end;

procedure MakeWav;
const
  Text: AnsiString = 'RIFF....WAVEfmt ....................data....';
var
  i: Integer;
begin
  for i := 0 to 43 do
    input.bytes[i] := Ord(Text[i + 1]);
  Put(4, Size_ - 8, 4);
  Put(16, 16, 4);
  Put(20, 1, 2);
  Put(22, 1, 2);
  Put(24, 8000, 4);
  Put(28, 16000, 4);
  Put(32, 2, 2);
  Put(34, 16, 2);
  Put(40, 2 * Frames, 4);
  for i := 0 to Frames - 1 do
    Put(44 + 2 * i, 3 * i, 2);
end;

function OnRead(user, buffer: Pointer; size: LongWord; count: PLongWord): LongInt; cdecl;
var
  self: PSource;
begin
  self := user;
  if self.code <> 0 then
    Exit(self.code);
  if Size_ - self.position < size then
    size := Size_ - self.position;
  count^ := size;
  if size > 0 then
    Move(self.bytes[self.position], buffer^, size);
  Inc(self.position, size);
  Result := 0;
end;

function OnSeek(user: Pointer; position: PInt64): LongInt; cdecl;
begin
  PSource(user).position := position^;
  Result := 0;
end;

function OnLength(user: Pointer; length: PInt64): LongInt; cdecl;
begin
  length^ := Size_;
  Result := 0;
end;

procedure OnRelease(user: Pointer); cdecl;
begin
  Inc(PSource(user).released);
end;

var
  callbacks: TStreamCallbacks;
  stream, decoded: Pointer;
  format: TAudioFormat;
  error: TError;
  text: array[0..199] of AnsiChar;
  text16: array[0..199] of WideChar;
  length, length16, count: LongWord;
  samples: array[0..4] of SmallInt;
  place, bytes: Int64;
  frame: QWord;
  version: LongInt;
begin
  Check(vorlund_version(nil, @version), 0);
  WriteLn('version ', version, ' 0');
  Check(vorlund_open(2), 0);

  MakeWav;
  callbacks.size := SizeOf(callbacks);
  callbacks.reserved := 0;
  callbacks.read := OnRead;
  callbacks.seek := OnSeek;
  callbacks.length := OnLength;
  callbacks.release := OnRelease;
  Check(vorlund_stream_create(callbacks, @input, nil, stream), 0);
  Check(vorlund_decode_stream(stream, nil, nil, nil, decoded), 0);
  format.size := SizeOf(format);
  Check(vorlund_stream_audio_format(decoded, format), 0);
  WriteLn('format ', format.channels, ' ', format.rate);
  Check(vorlund_stream_length(decoded, bytes), 0);
  Check(vorlund_stream_seek(decoded, 100), 0);
  Check(vorlund_stream_tell(decoded, place), 0);
  WriteLn('length ', bytes, ' ', place);
  Check(vorlund_stream_read_int16(decoded, @samples, 5, count), 0);
  WriteLn('samples ', count, ' ', samples[4]);
  frame := 7;
  Check(vorlund_stream_seek_frame_ptr(decoded, frame), 0);
  Check(vorlund_stream_read_int16(decoded, @samples, 1, count), 0);
  Check(vorlund_stream_tell_frame(decoded, frame), 0);
  WriteLn('frame ', frame, ' ', samples[0]);

  input.code := 42;
  Check(vorlund_stream_read(stream, @samples, 2, count), 12);
  error.size := SizeOf(error);
  Check(vorlund_last_error(error), 0);
  WriteLn('error ', error.code, ' ', error.callback_code);
  Check(vorlund_release(decoded), 0);
  Check(vorlund_release(stream), 0);
  Check(vorlund_release(stream), 101);
  WriteLn('released ', input.released, ' 0');

  Check(vorlund_decode_file('there is none.wav', nil, nil, nil, decoded), 4);
  Check(vorlund_error_text(0, text, 200, length), 0);
  Check(vorlund_error_text16(0, text16, 200, length16), 0);
  WriteLn(PAnsiChar(@text), ' ', length, ' ', length16);
  Check(vorlund_close, 0);
  Check(vorlund_handle_count(count), 0);
  WriteLn('handles ', count, ' ', failures);
  Halt(failures);
end.
