{ The declarations of include/vorlund/PluginTable.h, which describes them, for Free Pascal and Delphi. }
unit vorlund_plugin;

{$ifdef fpc}{$mode delphi}{$packrecords c}{$endif}

interface

const
  VORLUND_PLUGIN_TABLE_VERSION = 1;

  VORLUND_PLUGIN_OK = 0;
  VORLUND_PLUGIN_OTHER_DATA = 1;
  VORLUND_PLUGIN_DAMAGED = 2;
  VORLUND_PLUGIN_UNREADABLE = 3;
  VORLUND_PLUGIN_NO_MEMORY = 4;
  VORLUND_PLUGIN_NOT_SUPPORTED = 5;
  VORLUND_PLUGIN_FAILED = 6;

  VORLUND_PLUGIN_SAMPLES_8 = 0;
  VORLUND_PLUGIN_SAMPLES_16 = 1;
  VORLUND_PLUGIN_SAMPLES_32 = 2;
  VORLUND_PLUGIN_SAMPLES_FLOAT = 3;

type
  TVorlundId = record
    words: array[0..3] of LongWord;
  end;

  TVorlundAudio = record
    id: TVorlundId;
    size: LongWord;
    sample_format: LongWord;
    channels: LongWord;
    samples_per_sec: LongWord;
  end;

  TVorlundFormat = record
    case Integer of
      0: (audio: TVorlundAudio);
      1: (words: array[0..63] of LongWord);
  end;

  PVorlundInput = ^TVorlundInput;
  TVorlundInput = record
    size: LongWord;
    has_positions: LongWord;
    read: function(input: PVorlundInput; buffer: Pointer; size: LongWord;
      var count: LongWord): LongInt; {$ifdef windows}stdcall{$else}cdecl{$endif};
    seek: function(input: PVorlundInput; const position: PInt64): LongInt;
      {$ifdef windows}stdcall{$else}cdecl{$endif};
    tell: function(input: PVorlundInput; var position: Int64): LongInt;
      {$ifdef windows}stdcall{$else}cdecl{$endif};
    length: function(input: PVorlundInput; var length: Int64): LongInt;
      {$ifdef windows}stdcall{$else}cdecl{$endif};
    format: function(input: PVorlundInput; var format: TVorlundFormat): LongInt;
      {$ifdef windows}stdcall{$else}cdecl{$endif};
    explain: procedure(input: PVorlundInput; reason: PAnsiChar);
      {$ifdef windows}stdcall{$else}cdecl{$endif};
    note_container: procedure(input: PVorlundInput; name: PAnsiChar);
      {$ifdef windows}stdcall{$else}cdecl{$endif};
    note_value: procedure(input: PVorlundInput; name: PAnsiChar; value: PInt64);
      {$ifdef windows}stdcall{$else}cdecl{$endif};
    note_remark: procedure(input: PVorlundInput; text: PAnsiChar);
      {$ifdef windows}stdcall{$else}cdecl{$endif};
  end;

  PVorlundOpened = ^TVorlundOpened;
  TVorlundOpened = record
    size: LongWord;
    reserved: LongWord;
    length: Int64;
    instance: Pointer;
    format: TVorlundFormat;
  end;

  PVorlundDecoder = ^TVorlundDecoder;
  TVorlundDecoder = record
    size: LongWord;
    instance_size: LongWord;
    class_id: TVorlundId;
    class_name: PAnsiChar;
    source_format: TVorlundId;
    result_format: TVorlundId;
    recognise: function(decoder: PVorlundDecoder; input: PVorlundInput): LongInt;
      {$ifdef windows}stdcall{$else}cdecl{$endif};
    open: function(decoder: PVorlundDecoder; input: PVorlundInput; opened: PVorlundOpened): LongInt;
      {$ifdef windows}stdcall{$else}cdecl{$endif};
    read: function(instance: Pointer; buffer: Pointer; size: LongWord; count: PLongWord): LongInt;
      {$ifdef windows}stdcall{$else}cdecl{$endif};
    seek: function(instance: Pointer; position: PInt64): LongInt;
      {$ifdef windows}stdcall{$else}cdecl{$endif};
    close: procedure(instance: Pointer); {$ifdef windows}stdcall{$else}cdecl{$endif};
  end;

  PVorlundTable = ^TVorlundTable;
  TVorlundTable = record
    size: LongWord;
    version: LongWord;
    decoder_count: LongWord;
    device_count: LongWord;
    { Arrays of addresses. }
    decoders: Pointer;
    devices: Pointer;
  end;

implementation

end.
