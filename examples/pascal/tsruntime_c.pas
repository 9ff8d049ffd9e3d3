{ The library's C interface (tsruntime/tsruntime_c.h) for Free Pascal, with a thin layer
  that turns failures into exceptions and Pascal strings into the library's UTF-16 text.
  The records mirror the C structs field for field; ownership is the header's: a variant
  owns its string, array and object count, freed by tsrt_variant_clear. }
unit tsruntime_c;

{$mode objfpc}{$H+}
{$packrecords c}

interface

uses ctypes, SysUtils;

const
  TSRT_C_VERSION = 1;
  TSRT_OK = 0;
  TSRT_FAILED = 1;

  TSRT_VT_EMPTY = 0; TSRT_VT_NULL = 1; TSRT_VT_INTEGER = 2; TSRT_VT_LONG = 3;
  TSRT_VT_SINGLE = 4; TSRT_VT_DOUBLE = 5; TSRT_VT_CURRENCY = 6; TSRT_VT_DATE = 7;
  TSRT_VT_STRING = 8; TSRT_VT_OBJECT = 9; TSRT_VT_ERROR = 10; TSRT_VT_BOOLEAN = 11;
  TSRT_VT_VARIANT = 12; TSRT_VT_DECIMAL = 14; TSRT_VT_BYTE = 17; TSRT_VT_ARRAY = $2000;

  TSRT_INVOKE_CALL = 1; TSRT_INVOKE_LET = 2; TSRT_INVOKE_SET = 4;

  TSRT_MEMBER_METHOD = 1; TSRT_MEMBER_GET = 2; TSRT_MEMBER_LET = 4; TSRT_MEMBER_SET = 8;

type
  tsrt_status = Int32;
  Ptsrt_object = Pointer;
  Ptsrt_class = Pointer;

  tsrt_text = record
    chars: PWideChar;
    length: csize_t;
  end;

  Ptsrt_error = ^tsrt_error;
  PPtsrt_error = ^Ptsrt_error;
  tsrt_error = record
    number: Int32;
    source, description, help_file: tsrt_text;
    help_context: Int32;
  end;

  tsrt_bounds = record
    lower, upper: Int32;
  end;
  Ptsrt_bounds = ^tsrt_bounds;

  Ptsrt_variant = ^tsrt_variant;
  Ptsrt_array = ^tsrt_array;

  tsrt_variant = record
    vtype: UInt16;
    case Integer of
      0: (integer_value: Int16);
      1: (long_value: Int32);
      2: (single_value: Single);
      3: (double_value: Double);
      4: (currency_value: Int64);
      5: (date_value: Double);
      6: (string_chars: PWideChar; string_length: csize_t);
      7: (object_value: Ptsrt_object);
      8: (error_value: Int32);
      9: (boolean_value: Int16);
      10: (decimal_low: UInt64; decimal_high: UInt32; decimal_scale, decimal_negative: Byte);
      11: (byte_value: Byte);
      12: (array_value: Ptsrt_array);
  end;

  tsrt_array = record
    element_type: UInt16;
    dimensions: Int32;
    bounds: Ptsrt_bounds;
    count: csize_t;
    elements: Ptsrt_variant;
    bytes: PByte;
  end;

  Ptsrt_argument = ^tsrt_argument;
  tsrt_argument = record
    name: tsrt_text;
    value: tsrt_variant;
  end;

  tsrt_event_callback = procedure(user: Pointer; event: PWideChar; event_length: csize_t;
                                  args: Ptsrt_variant; count: csize_t); cdecl;

const
  libtsruntime = 'tsruntime';

function tsrt_version: Int32; cdecl; external libtsruntime;
procedure tsrt_error_free(error: Ptsrt_error); cdecl; external libtsruntime;
procedure tsrt_variant_clear(v: Ptsrt_variant); cdecl; external libtsruntime;
function tsrt_variant_copy(dst, src: Ptsrt_variant; error: PPtsrt_error): tsrt_status;
  cdecl; external libtsruntime;
function tsrt_variant_change_type(dst, src: Ptsrt_variant; vtype: UInt16;
  error: PPtsrt_error): tsrt_status; cdecl; external libtsruntime;
procedure tsrt_variant_set_null(v: Ptsrt_variant); cdecl; external libtsruntime;
procedure tsrt_variant_set_long(v: Ptsrt_variant; x: Int32); cdecl; external libtsruntime;
procedure tsrt_variant_set_double(v: Ptsrt_variant; x: Double); cdecl; external libtsruntime;
procedure tsrt_variant_set_currency(v: Ptsrt_variant; amount_times_10000: Int64);
  cdecl; external libtsruntime;
procedure tsrt_variant_set_date(v: Ptsrt_variant; days: Double); cdecl; external libtsruntime;
procedure tsrt_variant_set_boolean(v: Ptsrt_variant; truth: cint); cdecl; external libtsruntime;
procedure tsrt_variant_set_object(v: Ptsrt_variant; obj: Ptsrt_object);
  cdecl; external libtsruntime;
procedure tsrt_variant_set_array(v: Ptsrt_variant; arr: Ptsrt_array);
  cdecl; external libtsruntime;
function tsrt_variant_set_string(v: Ptsrt_variant; chars: PWideChar; length: csize_t;
  error: PPtsrt_error): tsrt_status; cdecl; external libtsruntime;
function tsrt_variant_set_utf8(v: Ptsrt_variant; text: PChar; length: csize_t;
  error: PPtsrt_error): tsrt_status; cdecl; external libtsruntime;
function tsrt_array_new(element_type: UInt16; dimensions: Int32; bounds: Ptsrt_bounds;
  error: PPtsrt_error): Ptsrt_array; cdecl; external libtsruntime;
procedure tsrt_array_free(arr: Ptsrt_array); cdecl; external libtsruntime;
function tsrt_utf16_to_utf8(chars: PWideChar; length: csize_t; utf8_length: pcsize_t): PChar;
  cdecl; external libtsruntime;
procedure tsrt_free(memory: Pointer); cdecl; external libtsruntime;
function tsrt_create(prog_id: PWideChar; length: csize_t; out obj: Ptsrt_object;
  error: PPtsrt_error): tsrt_status; cdecl; external libtsruntime;
procedure tsrt_object_addref(obj: Ptsrt_object); cdecl; external libtsruntime;
function tsrt_object_release(obj: Ptsrt_object): Int32; cdecl; external libtsruntime;
function tsrt_invoke(obj: Ptsrt_object; member: PWideChar; member_length: csize_t;
  kind: Int32; args: Ptsrt_argument; arg_count: csize_t; result: Ptsrt_variant;
  error: PPtsrt_error): tsrt_status; cdecl; external libtsruntime;
function tsrt_connect(obj: Ptsrt_object; callback: tsrt_event_callback; user: Pointer;
  out cookie: Int32; error: PPtsrt_error): tsrt_status; cdecl; external libtsruntime;
procedure tsrt_disconnect(obj: Ptsrt_object; cookie: Int32); cdecl; external libtsruntime;
function tsrt_class_find(name: PWideChar; length: csize_t): Ptsrt_class;
  cdecl; external libtsruntime;
function tsrt_object_class(obj: Ptsrt_object): Ptsrt_class; cdecl; external libtsruntime;

{ --- The Pascal side -------------------------------------------------------------- }

type
  { A library error with the five fields of the host runtime's Err object; the fifth,
    HelpContext, is the one every Exception has. }
  ETsrtError = class(Exception)
  public
    Number: Int32;
    Source, Description, HelpFile: UnicodeString;
  end;

{ Text as Pascal keeps it. }
function TextOf(const t: tsrt_text): UnicodeString;
function VariantText(const v: tsrt_variant): UnicodeString;
{ Raises ETsrtError (and frees the error) when `status` is a failure. }
procedure Check(status: tsrt_status; error: Ptsrt_error);

{ Argument builders: each returns a positional argument holding a new value; NamedArg
  names one. ClearArgs frees what they hold (values and names) after the call. }
function StrArg(const s: UnicodeString): tsrt_argument;
function LongArg(x: Int32): tsrt_argument;
function CurrencyArg(amount: Currency): tsrt_argument;
function BoolArg(b: Boolean): tsrt_argument;
function NamedArg(const name: UnicodeString; const arg: tsrt_argument): tsrt_argument;
procedure ClearArgs(var args: array of tsrt_argument);

{ CreateObject by ProgID, and a member invoked with `args`, written-back values landing
  in `args` (an empty member is the default one); both raise ETsrtError. The caller
  clears the result. }
function CreateObject(const progId: UnicodeString): Ptsrt_object;
function Invoke(obj: Ptsrt_object; const member: UnicodeString; kind: Int32;
  var args: array of tsrt_argument): tsrt_variant;

implementation

function TextOf(const t: tsrt_text): UnicodeString;
begin
  SetLength(Result, t.length);
  if t.length > 0 then Move(t.chars^, Result[1], t.length * SizeOf(WideChar));
end;

function VariantText(const v: tsrt_variant): UnicodeString;
begin
  if v.vtype <> TSRT_VT_STRING then
    raise Exception.CreateFmt('a String was expected, got type %d', [v.vtype]);
  SetLength(Result, v.string_length);
  if v.string_length > 0 then
    Move(v.string_chars^, Result[1], v.string_length * SizeOf(WideChar));
end;

procedure Check(status: tsrt_status; error: Ptsrt_error);
var
  e: ETsrtError;
begin
  if status = TSRT_OK then Exit;
  if error = nil then raise ETsrtError.Create('the library call failed');
  e := ETsrtError.Create(UTF8Encode(TextOf(error^.description)));
  e.Number := error^.number;
  e.Source := TextOf(error^.source);
  e.Description := TextOf(error^.description);
  e.HelpFile := TextOf(error^.help_file);
  e.HelpContext := error^.help_context;
  tsrt_error_free(error);
  raise e;
end;

function StrArg(const s: UnicodeString): tsrt_argument;
var
  err: Ptsrt_error;
begin
  FillChar(Result, SizeOf(Result), 0);
  Check(tsrt_variant_set_string(@Result.value, PWideChar(s), Length(s), @err), err);
end;

function LongArg(x: Int32): tsrt_argument;
begin
  FillChar(Result, SizeOf(Result), 0);
  tsrt_variant_set_long(@Result.value, x);
end;

function CurrencyArg(amount: Currency): tsrt_argument;
begin
  FillChar(Result, SizeOf(Result), 0);
  { Pascal's Currency is the same fixed point: amount × 10,000 in 64 bits. }
  tsrt_variant_set_currency(@Result.value, PInt64(@amount)^);
end;

function BoolArg(b: Boolean): tsrt_argument;
begin
  FillChar(Result, SizeOf(Result), 0);
  tsrt_variant_set_boolean(@Result.value, Ord(b));
end;

function NamedArg(const name: UnicodeString; const arg: tsrt_argument): tsrt_argument;
var
  chars: PWideChar;
begin
  { A copy of the name that ClearArgs frees with the value. }
  chars := GetMem((Length(name) + 1) * SizeOf(WideChar));
  if Length(name) > 0 then Move(name[1], chars^, Length(name) * SizeOf(WideChar));
  chars[Length(name)] := #0;
  Result := arg;
  Result.name.chars := chars;
  Result.name.length := Length(name);
end;

procedure ClearArgs(var args: array of tsrt_argument);
var
  i: Integer;
begin
  for i := 0 to High(args) do
  begin
    tsrt_variant_clear(@args[i].value);
    if args[i].name.chars <> nil then FreeMem(args[i].name.chars);
    args[i].name.chars := nil;
    args[i].name.length := 0;
  end;
end;

function CreateObject(const progId: UnicodeString): Ptsrt_object;
var
  err: Ptsrt_error;
begin
  Check(tsrt_create(PWideChar(progId), Length(progId), Result, @err), err);
end;

function Invoke(obj: Ptsrt_object; const member: UnicodeString; kind: Int32;
  var args: array of tsrt_argument): tsrt_variant;
var
  err: Ptsrt_error;
  first: Ptsrt_argument;
  name: PWideChar;
begin
  name := nil;  { the class's default member }
  if member <> '' then name := PWideChar(member);
  first := nil;
  if Length(args) > 0 then first := @args[0];
  Check(tsrt_invoke(obj, name, Length(member), kind, first, Length(args),
                    @Result, @err), err);
end;

end.
