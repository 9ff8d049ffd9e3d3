{ Free Pascal driving the library through its C interface: amounts in words, a caret
  written back, a dictionary that reports its changes, and an error with its fields.
  Each step prints what it got and checks it; the exit code is the number of failures. }
program tsrt_demo;

{$mode objfpc}{$H+}
{$codepage utf8}

uses SysUtils, ctypes, tsruntime_c;

var
  Passed: Integer = 0;
  Failed: Integer = 0;
  Changes: Integer = 0;
  LastChanged: UnicodeString = '';

procedure Expect(ok: Boolean; const what: String);
begin
  if ok then Inc(Passed) else Inc(Failed);
  if ok then WriteLn('ok - ', what) else WriteLn('FAILED - ', what);
end;

{ The dictionary's OnChanged, counted through the user pointer. }
procedure OnEvent(user: Pointer; event: PWideChar; event_length: csize_t; args: Ptsrt_variant;
  count: csize_t); cdecl;
var
  name: UnicodeString;
begin
  SetString(name, event, event_length);
  if (name = 'OnChanged') and (count = 1) and (args^.vtype = TSRT_VT_STRING) then
  begin
    Inc(PInteger(user)^);
    LastChanged := VariantText(args^);
  end;
end;

procedure Strings;
var
  s: Ptsrt_object;
  args: array of tsrt_argument;
  r: tsrt_variant;
begin
  s := CreateObject('TSRuntimeLib.clsZKString');
  args := [CurrencyArg(1234.56)];
  r := Invoke(s, 'InWords', TSRT_INVOKE_CALL, args);
  WriteLn(UTF8Encode(VariantText(r)));
  Expect(VariantText(r) = 'одна тысяча двести тридцать четыре рубля 56 копеек',
         'InWords spells a Pascal Currency');
  tsrt_variant_clear(@r);
  ClearArgs(args);

  args := [StrArg('a-b-c'), StrArg('-'), NamedArg('SelStart', LongArg(4))];
  r := Invoke(s, 'Filter', TSRT_INVOKE_CALL, args);
  Expect((VariantText(r) = 'abc') and (args[2].value.long_value = 2),
         'Filter returns the text and moves the caret in place');
  tsrt_variant_clear(@r);
  ClearArgs(args);
  tsrt_object_release(s);
end;

procedure Dictionary;
var
  d: Ptsrt_object;
  args: array of tsrt_argument;
  r: tsrt_variant;
  cookie: Int32;
  err: Ptsrt_error;
begin
  d := CreateObject('TSRuntimeLib.clsZKDictionary');
  Check(tsrt_connect(d, @OnEvent, @Changes, cookie, @err), err);
  args := [StrArg('Москва'), LongArg(1)];
  r := Invoke(d, 'Add', TSRT_INVOKE_CALL, args);
  ClearArgs(args);
  args := [StrArg('МОСКВА'), LongArg(12)];
  r := Invoke(d, 'Data', TSRT_INVOKE_LET, args);
  ClearArgs(args);
  Expect((Changes = 1) and (LastChanged = 'МОСКВА'),
         'assigning an entry raises OnChanged with the key used');
  args := [StrArg('москва')];
  r := Invoke(d, '', TSRT_INVOKE_CALL, args);
  Expect((r.vtype = TSRT_VT_LONG) and (r.long_value = 12),
         'the default member reads the entry by a key in any case');
  ClearArgs(args);
  tsrt_disconnect(d, cookie);
  Expect(tsrt_object_release(d) = 0, 'releasing the only count destroys the dictionary');
end;

procedure Errors;
var
  s: Ptsrt_object;
  args: array of tsrt_argument;
begin
  s := CreateObject('TSRuntimeLib.clsZKString');
  args := [StrArg('abc'), StrArg('b'), LongArg(-5)];
  try
    Invoke(s, 'InstrRight', TSRT_INVOKE_CALL, args);
    Expect(False, 'InstrRight with a negative length fails');
  except
    on e: ETsrtError do
    begin
      WriteLn('Error ', e.Number, ' (', UTF8Encode(e.Source), '): ', e.Message);
      Expect((e.Number = -2147220803) and (e.Source = 'ZKRuntimeLib.clsZKString.InstrRight')
             and (e.Description = 'SearchLen = -5'),
             'the class''s error arrives as an exception with number, source and text');
    end;
  end;
  ClearArgs(args);
  tsrt_object_release(s);
  try
    CreateObject('TSRuntimeLib.NoSuchClass');
    Expect(False, 'an unknown class cannot be created');
  except
    on e: ETsrtError do Expect(e.Number = 429, 'an unknown class is error 429');
  end;
end;

begin
  Expect(SizeOf(tsrt_variant) = 24, 'the variant record matches the C struct');
  Expect(SizeOf(tsrt_argument) = 40, 'the argument record matches the C struct');
  Expect(tsrt_version >= TSRT_C_VERSION, 'the library implements at least this unit''s version');
  Strings;
  Dictionary;
  Errors;
  WriteLn(Passed, ' passed, ', Failed, ' failed');
  Halt(Failed);
end.
