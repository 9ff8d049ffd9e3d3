/* The C interface driven from C11: classes created by ProgID, members called with
 * positional, named and written-back arguments, errors with their five fields, events,
 * arrays and type information. Prints "N passed, N failed". */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <uchar.h>

#include "tsruntime/tsruntime_c.h"

static int passed, failed;

static void check(int ok, const char* what) {
  if (ok) ++passed;
  else ++failed, fprintf(stderr, "FAILED: %s\n", what);
}

static size_t length_of(const char16_t* s) {
  size_t n = 0;
  while (s[n]) ++n;
  return n;
}

static int text_is(const uint16_t* chars, size_t length, const char16_t* expected) {
  return length == length_of(expected) &&
         (length == 0 || memcmp(chars, expected, length * sizeof(uint16_t)) == 0);
}
#define TEXT_IS(t, expected) text_is((t).chars, (t).length, expected)

static int string_is(const tsrt_variant* v, const char16_t* expected) {
  return v->type == TSRT_VT_STRING && TEXT_IS(v->value.string, expected);
}

static tsrt_object* create(const char16_t* prog_id) {
  tsrt_object* o = NULL;
  if (tsrt_create(prog_id, length_of(prog_id), &o, NULL) != TSRT_OK) exit(1);
  return o;
}

static tsrt_status call(tsrt_object* o, const char16_t* member, int32_t kind,
                        tsrt_argument* args, size_t count, tsrt_variant* result,
                        tsrt_error** error) {
  return tsrt_invoke(o, member, member ? length_of(member) : 0, kind, args, count, result,
                     error);
}

static void clear_args(tsrt_argument* args, size_t count) {
  for (size_t i = 0; i < count; ++i) tsrt_variant_clear(&args[i].value);
}

/* One argument of a table row: 's' string, 'l' Long, 'd' Double, 'c' Currency (the
 * amount), 'b' Boolean, 'm' the missing-argument marker, 'o' an object; `name` makes it
 * named. */
typedef struct {
  char kind;
  const char16_t* name;
  const char16_t* text;
  double number;
  tsrt_object* object;
} arg_row;
#define S(t) {'s', NULL, t, 0, NULL}
#define L(n) {'l', NULL, NULL, n, NULL}
#define C(n) {'c', NULL, NULL, n, NULL}
#define B(n) {'b', NULL, NULL, n, NULL}
#define MAX_ARGS 5

static void build_args(const arg_row* rows_in, size_t count, tsrt_argument* out) {
  memset(out, 0, count * sizeof *out);
  for (size_t i = 0; i < count; ++i) {
    const arg_row* s = &rows_in[i];
    if (s->name) {
      out[i].name.chars = (const uint16_t*)s->name;
      out[i].name.length = length_of(s->name);
    }
    switch (s->kind) {
      case 's': tsrt_variant_set_string(&out[i].value, s->text, length_of(s->text), NULL); break;
      case 'l': tsrt_variant_set_long(&out[i].value, (int32_t)s->number); break;
      case 'd': tsrt_variant_set_double(&out[i].value, s->number); break;
      case 'c': tsrt_variant_set_currency(&out[i].value, (int64_t)(s->number * 10000 + 0.5)); break;
      case 'b': tsrt_variant_set_boolean(&out[i].value, s->number != 0); break;
      case 'o': tsrt_variant_set_object(&out[i].value, s->object); break;
      case 'm': out[i].value.type = TSRT_VT_ERROR, out[i].value.value.error = (int32_t)0x80020004u;
    }
  }
}

/* Calls `member` with arguments built from `rows`, then clears them. */
static tsrt_status run(tsrt_object* o, const char16_t* member, int32_t kind, const arg_row* rows,
                       size_t argc, tsrt_variant* result, tsrt_error** e) {
  tsrt_argument args[MAX_ARGS];
  build_args(rows, argc, args);
  const tsrt_status status = call(o, member, kind, args, argc, result, e);
  clear_args(args, argc);
  return status;
}

static int long_is(const tsrt_variant* v, int32_t n) {
  return v->type == TSRT_VT_LONG && v->value.long_value == n;
}

static const char16_t kSpelled[] = u"одна тысяча двести тридцать четыре рубля 56 копеек";

static void results_of_string_members(void) {
  static const struct { const char* sentence; const char16_t *prog_id, *member; size_t argc;
      arg_row args[MAX_ARGS]; const char16_t* expected; } rows[] = {
      {"InWords spells a Currency amount in Russian words", u"TSRuntimeLib.clsZKString",
       u"InWords", 1, {C(1234.56)}, kSpelled},
      {"a Double argument is converted to the declared Currency", u"TSRuntimeLib.clsZKString",
       u"InWords", 1, {{'d', NULL, NULL, 1234.56, NULL}}, kSpelled},
      {"a named argument reaches its parameter in any case", u"TSRuntimeLib.clsZKString",
       u"inwords", 2, {C(1234.56), {'b', u"includeunitnames", NULL, 0, NULL}},
       u"одна тысяча двести тридцать четыре "},
      {"GetLeft cuts the text before the separator", u"clsZKString", u"GetLeft", 2,
       {S(u"key=value"), S(u"=")}, u"key"},
      {"a text the caller gave as a number converts to the declared String", u"clsZKString",
       u"GetLeft", 2, {L(123), S(u"2")}, u"1"},
      {"the missing-argument marker lets a parameter take its default", u"clsZKString",
       u"GetLeft", 3, {S(u"a=b=c"), S(u"="), {'m', NULL, NULL, 0, NULL}}, u"a"},
      {"GetLeft told to search from the right cuts before the last separator", u"clsZKString",
       u"GetLeft", 3, {S(u"a=b=c"), S(u"="), B(1)}, u"a=b"},
      {"MD5 of a string comes back as upper-case hex", u"TSRuntimeLib.clsZKmd5",
       u"DigestStrToHexStr", 1, {S(u"abc")}, u"900150983CD24FB0D6963F7D28E17F72"},
  };
  for (size_t r = 0; r < sizeof rows / sizeof rows[0]; ++r) {
    tsrt_object* o = create(rows[r].prog_id);
    tsrt_variant result;
    check(run(o, rows[r].member, TSRT_INVOKE_CALL, rows[r].args, rows[r].argc, &result, NULL) ==
                  TSRT_OK && string_is(&result, rows[r].expected), rows[r].sentence);
    tsrt_variant_clear(&result);
    tsrt_object_release(o);
  }
}

static void errors_carry_five_fields(void) {
  static const char16_t kLib[] = u"ZKRuntimeLib", k438[] =
      u"Object doesn't support this property or method";
  static const struct { const char* sentence; const char16_t* prog_id;
      const char16_t* member; /* NULL: the default member */ int32_t kind; size_t argc;
      arg_row args[MAX_ARGS]; int32_t number; const char16_t *source, *description; } rows[] = {
      {"a member that does not exist is error 438", u"clsZKString", u"NoSuchMember",
       TSRT_INVOKE_CALL, 0, {{0}}, 438, kLib, k438},
      {"a class without a default member refuses a call without a name", u"clsZKString", NULL,
       TSRT_INVOKE_CALL, 0, {{0}}, 438, kLib, k438},
      {"an invocation kind that does not exist is error 5", u"clsZKString", u"GetLeft", 99, 0,
       {{0}}, 5, kLib, u"Invalid procedure call or argument"},
      {"a required argument left out is error 449", u"clsZKString", u"GetLeft", TSRT_INVOKE_CALL,
       1, {S(u"a=b")}, 449, kLib, u"Argument not optional"},
      {"a named argument the member does not have is error 448", u"clsZKString", u"GetLeft",
       TSRT_INVOKE_CALL, 3, {S(u"a=b"), S(u"="), {'b', u"NoSuchParam", NULL, 1, NULL}}, 448,
       kLib, u"Named argument not found"},
      {"more arguments than parameters is error 450", u"clsZKString", u"InWords",
       TSRT_INVOKE_CALL, 3, {C(1), B(1), B(1)}, 450, kLib,
       u"Wrong number of arguments or invalid property assignment"},
      {"text that is not a number for a Currency parameter is error 13", u"clsZKString",
       u"InWords", TSRT_INVOKE_CALL, 1, {S(u"many")}, 13, kLib, u"Type mismatch"},
      {"the class's own error keeps its number, source and description", u"clsZKString",
       u"InstrRight", TSRT_INVOKE_CALL, 3, {S(u"abc"), S(u"b"), L(-5)}, -2147220803,
       u"ZKRuntimeLib.clsZKString.InstrRight", u"SearchLen = -5"},
      {"the dictionary's failed assignment reaches the caller", u"clsZKDictionary", u"Data",
       TSRT_INVOKE_LET, 2, {S(u"absent"), L(1)}, 5, kLib, u"Invalid procedure call or argument"},
  };
  for (size_t r = 0; r < sizeof rows / sizeof rows[0]; ++r) {
    tsrt_object* o = create(rows[r].prog_id);
    tsrt_variant result;
    tsrt_error* e = NULL;
    const tsrt_status status =
        run(o, rows[r].member, rows[r].kind, rows[r].args, rows[r].argc, &result, &e);
    check(status == TSRT_FAILED && e && e->number == rows[r].number &&
              TEXT_IS(e->source, rows[r].source) && TEXT_IS(e->description, rows[r].description) &&
              e->help_file.length == 0 && e->help_context == 0 && result.type == TSRT_VT_EMPTY,
          rows[r].sentence);
    tsrt_error_free(e);
    tsrt_object_release(o);
  }

  tsrt_object* missing = NULL;
  tsrt_error* e = NULL;
  check(tsrt_create(u"TSRuntimeLib.NoSuchClass", 24, &missing, &e) == TSRT_FAILED && !missing &&
            e && e->number == 429 &&
            TEXT_IS(e->description, u"ActiveX component can't create object"),
        "creating a class that is not registered is error 429");
  tsrt_error_free(e);
  tsrt_variant result;
  e = NULL;
  check(call(NULL, u"Count", TSRT_INVOKE_CALL, NULL, 0, &result, &e) == TSRT_FAILED && e &&
            e->number == 91, "a call on no object is error 91");
  tsrt_error_free(e);
  check(call(NULL, u"Count", TSRT_INVOKE_CALL, NULL, 0, &result, NULL) == TSRT_FAILED,
        "a failure without an error out-parameter still reports its status");
}

static void written_back_arguments_change_in_place(void) {
  tsrt_object* s = create(u"TSRuntimeLib.clsZKString");
  const arg_row filter[] = {S(u"a-b-c"), S(u"-"), {'l', u"SelStart", NULL, 4, NULL},
                            {'s', u"CompareType", u"not a number", 0, NULL}};
  tsrt_argument args[4];
  build_args(filter, 4, args);
  tsrt_variant result;
  check(call(s, u"Filter", TSRT_INVOKE_CALL, args, 4, &result, NULL) == TSRT_FAILED &&
            long_is(&args[2].value, 4) && result.type == TSRT_VT_EMPTY,
        "a call that fails writes nothing back");
  check(call(s, u"Filter", TSRT_INVOKE_CALL, args, 3, &result, NULL) == TSRT_OK &&
            string_is(&result, u"abc") && long_is(&args[2].value, 2) &&
            string_is(&args[0].value, u"a-b-c"),
        "Filter moves the caret it was given and leaves its by-value text alone");
  tsrt_variant_clear(&result);
  clear_args(args, 4);
  tsrt_object_release(s);

  /* Arrays keep their bounds through the boundary both ways. */
  tsrt_object* a = create(u"TSRuntimeLib.clsZKArray");
  const tsrt_bounds one_to_three = {1, 3};
  tsrt_array* words = tsrt_array_new(TSRT_VT_STRING, 1, &one_to_three, NULL);
  const char16_t* unsorted[] = {u"вишня", u"арбуз", u"банан"};
  for (size_t i = 0; i < 3; ++i) {
    tsrt_variant_set_string(&words->elements[i], unsorted[i], length_of(unsorted[i]), NULL);
  }
  const arg_row sort_rows[] = {L(0), L(1), L(3)};
  tsrt_argument sort[3];
  build_args(sort_rows, 3, sort);
  tsrt_variant_set_array(&sort[0].value, words);
  const tsrt_status status = call(a, u"SortQuick", TSRT_INVOKE_CALL, sort, 3, &result, NULL);
  const tsrt_array* sorted = sort[0].value.value.array;
  check(status == TSRT_OK && result.type == TSRT_VT_BOOLEAN && result.value.boolean == -1 &&
            sort[0].value.type == (TSRT_VT_ARRAY | TSRT_VT_STRING) && sorted->dimensions == 1 &&
            sorted->bounds[0].lower == 1 && sorted->bounds[0].upper == 3 &&
            string_is(&sorted->elements[0], u"арбуз") &&
            string_is(&sorted->elements[1], u"банан") && string_is(&sorted->elements[2], u"вишня"),
        "SortQuick sorts a string array with bounds 1 to 3 in place, bounds kept");
  clear_args(sort, 3);

  /* The shape of an array crosses as it is: no dimensions, an empty one, one element. */
  static const struct { const char* sentence; int32_t dimensions; tsrt_bounds bounds;
      int expect_nothing; } shapes[] = {
      {"a never-dimensioned array is Nothing to IsArrayNothing", 0, {0, 0}, 1},
      {"an array of 0 to -1 holds nothing, so it is Nothing too", 1, {0, -1}, 1},
      {"an array of 5 to 5 holds an element, so it is not Nothing", 1, {5, 5}, 0},
  };
  for (size_t r = 0; r < sizeof shapes / sizeof shapes[0]; ++r) {
    tsrt_argument arg = {0};
    tsrt_variant_set_array(
        &arg.value, tsrt_array_new(TSRT_VT_VARIANT, shapes[r].dimensions, &shapes[r].bounds, NULL));
    check(call(a, u"IsArrayNothing", TSRT_INVOKE_CALL, &arg, 1, &result, NULL) == TSRT_OK &&
              result.type == TSRT_VT_BOOLEAN &&
              (result.value.boolean != 0) == shapes[r].expect_nothing,
          shapes[r].sentence);
    clear_args(&arg, 1);
  }
  tsrt_object_release(a);
}

static void on_tick(void* user, const uint16_t* event, size_t event_length, tsrt_variant* args,
                    size_t count) {
  (void)args;
  if (text_is(event, event_length, u"ThatTime") && count == 0) ++*(int*)user;
}

static void timer_ticks_while_the_host_pumps(void) {
  tsrt_object* t = create(u"TSRuntimeLib.CTimer");
  int ticks = 0;
  int32_t cookie = 0;
  tsrt_connect(t, on_tick, &ticks, &cookie, NULL);
  tsrt_variant result = {0};
  const arg_row two[] = {L(2)}, zero[] = {L(0)};
  check(run(t, u"Interval", TSRT_INVOKE_LET, two, 1, &result, NULL) == TSRT_OK, "a timer starts");
  for (long spins = 0; ticks < 2 && spins < 50000000; ++spins) tsrt_pump_waiting_messages();
  check(ticks >= 2, "its ThatTime reaches the callback while the host pumps");
  run(t, u"Interval", TSRT_INVOKE_LET, zero, 1, &result, NULL);
  check(tsrt_object_release(t) == 0, "a stopped timer goes with its last count");
}

typedef struct {
  int count;
  tsrt_variant last_item;
} change_log;

static void on_event(void* user, const uint16_t* event, size_t event_length, tsrt_variant* args,
                     size_t count) {
  change_log* log = user;
  if (!text_is(event, event_length, u"OnChanged") || count != 1) return;
  ++log->count;
  tsrt_variant_copy(&log->last_item, &args[0], NULL);
}

static void dictionary_and_its_events(void) {
  tsrt_object* d = create(u"TSRuntimeLib.clsZKDictionary");
  change_log log = {0, {0}};
  int32_t cookie = 0;
  check(tsrt_connect(d, on_event, &log, &cookie, NULL) == TSRT_OK && cookie != 0,
        "connecting to a dictionary gives a cookie");
  const arg_row entries[3][2] = {{S(u"один"), L(1)}, {S(u"два"), L(2)}, {S(u"три"), L(3)}};
  tsrt_variant result;
  for (size_t i = 0; i < 3; ++i) run(d, u"Add", TSRT_INVOKE_CALL, entries[i], 2, &result, NULL);
  check(call(d, u"Count", TSRT_INVOKE_CALL, NULL, 0, &result, NULL) == TSRT_OK &&
            long_is(&result, 3), "three keys added make a Count of 3");
  check(log.count == 0, "adding keys raises no OnChanged");
  const arg_row upper[] = {S(u"ДВА")}, let[] = {S(u"два"), L(20)}, again[] = {S(u"два"), L(200)};
  check(run(d, NULL, TSRT_INVOKE_CALL, upper, 1, &result, NULL) == TSRT_OK && long_is(&result, 2),
        "the default member reads an entry by a key in another case");
  check(run(d, u"Data", TSRT_INVOKE_LET, let, 2, &result, NULL) == TSRT_OK && log.count == 1 &&
            string_is(&log.last_item, u"два"),
        "assigning an entry raises OnChanged with the item, to the callback's user pointer");
  check(run(d, u"Data", TSRT_INVOKE_CALL, let, 1, &result, NULL) == TSRT_OK &&
            long_is(&result, 20), "the assigned value reads back");
  tsrt_disconnect(d, cookie);
  run(d, u"Data", TSRT_INVOKE_LET, again, 2, &result, NULL);
  check(log.count == 1, "a disconnected callback hears nothing more");
  tsrt_variant_clear(&log.last_item);
  check(tsrt_object_release(d) == 0, "releasing the only count destroys the dictionary");
}

/* The object a member returns, with its own count; NULL when the call fails. */
static tsrt_object* object_of(tsrt_object* o, const char16_t* member) {
  tsrt_variant v;
  if (call(o, member, TSRT_INVOKE_CALL, NULL, 0, &v, NULL) != TSRT_OK) return NULL;
  tsrt_object* out = v.type == TSRT_VT_OBJECT ? v.value.object : NULL;
  tsrt_object_addref(out);
  tsrt_variant_clear(&v);
  return out;
}

static void objects_returned_are_counted(void) {
  tsrt_object* root = create(u"TSRuntimeLib.clsZKRunTimeLib");
  tsrt_object* string_object = object_of(root, u"GetObjString");
  check(string_object != NULL, "a property returning an object hands out a handle");
  const arg_row amount[] = {C(1234.56)};
  tsrt_variant result;
  check(run(string_object, u"InWords", TSRT_INVOKE_CALL, amount, 1, &result, NULL) == TSRT_OK &&
            string_is(&result, kSpelled), "a returned object is called like a created one");
  tsrt_variant_clear(&result);
  check(tsrt_object_class(string_object) == tsrt_class_find(u"clsZKString", 11),
        "a returned object knows its class");
  tsrt_object_addref(string_object);
  check(tsrt_object_release(string_object) == 1, "AddRef and Release count in step");
  tsrt_object_release(string_object);
  tsrt_object_release(root);
  check(tsrt_object_release(NULL) == 0, "releasing no object is harmless");
}

static int utf8_is(const tsrt_variant* v, const char* expected) {
  size_t n = 0;
  char* utf8 = tsrt_utf16_to_utf8(v->value.string.chars, v->value.string.length, &n);
  const int same = utf8 && n == strlen(expected) && strcmp(utf8, expected) == 0;
  tsrt_free(utf8);
  return same;
}

static void storage_takes_objects_from_c(void) {
  static const char16_t* const names[] = {u"Склад", u"Касса", u"Банк"};
  static const char* const utf8_names[] = {"Склад", "Касса", "Банк"};
  tsrt_object* root = create(u"TSRuntimeLib.clsZKStorage");
  tsrt_object* nodes = object_of(root, u"Nodes");
  tsrt_variant result;
  for (size_t i = 0; i < 3; ++i) {
    const arg_row name[] = {S(names[i])};
    arg_row child[] = {{'o', NULL, NULL, 0, create(u"TSRuntimeLib.clsZKStorage")}};
    run(child[0].object, u"Name", TSRT_INVOKE_LET, name, 1, &result, NULL);
    run(nodes, u"Add", TSRT_INVOKE_CALL, child, 1, &result, NULL);
    tsrt_object_release(child[0].object); /* the tree holds its own count now */
  }
  tsrt_variant count;
  check(call(nodes, u"Count", TSRT_INVOKE_CALL, NULL, 0, &count, NULL) == TSRT_OK &&
            count.value.long_value == 3, "three storages passed from C as objects join the tree");

  /* For Each as a host does it: NewEnum, then Next with its item written back. */
  tsrt_object* walker = object_of(nodes, u"NewEnum");
  int in_order = walker != NULL;
  size_t seen = 0;
  for (;; ++seen) {
    tsrt_argument item = {0};
    tsrt_variant more, name = {0};
    if (call(walker, u"Next", TSRT_INVOKE_CALL, &item, 1, &more, NULL) != TSRT_OK ||
        !more.value.boolean) {
      clear_args(&item, 1);
      break;
    }
    in_order &= item.value.type == TSRT_VT_OBJECT && seen < 3 &&
                call(item.value.value.object, u"Name", TSRT_INVOKE_CALL, NULL, 0, &name, NULL) ==
                    TSRT_OK && utf8_is(&name, utf8_names[seen]);
    tsrt_variant_clear(&name);
    clear_args(&item, 1);
  }
  check(in_order && seen == 3, "enumerating the nodes gives each child, in order, by Next");
  const arg_row index[] = {L(5)};
  tsrt_error* e = NULL;
  check(run(nodes, NULL, TSRT_INVOKE_CALL, index, 1, &result, &e) == TSRT_FAILED && e != NULL,
        "a node index past the end fails through the default member");
  tsrt_error_free(e);
  tsrt_object_release(walker);
  tsrt_object_release(nodes);
  check(tsrt_object_release(root) == 0, "the root goes with its last count, children with it");
}

static void values_convert_as_the_host_runtime_does(void) {
  static const struct { const char* sentence; const char* text; uint16_t type;
      int32_t number; /* 0: a success */ } rows[] = {
      {"text holding a whole number converts to Long", "42", TSRT_VT_LONG, 0},
      {"text that is no number is a type mismatch", "x", TSRT_VT_LONG, 13},
      {"a number too large for an Integer overflows", "70000", TSRT_VT_INTEGER, 6},
      {"text converts to Boolean from its name", "True", TSRT_VT_BOOLEAN, 0},
      {"hexadecimal text takes a Long's 32 bits", "&HF060", TSRT_VT_LONG, 0},
      {"and overflows a Byte's 8", "&HF060", TSRT_VT_BYTE, 6},
  };
  for (size_t r = 0; r < sizeof rows / sizeof rows[0]; ++r) {
    tsrt_variant from = {0}, to = {0};
    tsrt_variant_set_utf8(&from, rows[r].text, strlen(rows[r].text), NULL);
    tsrt_error* e = NULL;
    const tsrt_status status = tsrt_variant_change_type(&to, &from, rows[r].type, &e);
    check(rows[r].number ? status == TSRT_FAILED && e && e->number == rows[r].number
                         : status == TSRT_OK && to.type == rows[r].type,
          rows[r].sentence);
    tsrt_error_free(e);
    tsrt_variant_clear(&from);
    tsrt_variant_clear(&to);
  }

  /* An object where a value is expected: its default member, Description. */
  tsrt_object* record = create(u"TSRuntimeLib.clsTSError");
  const arg_row d[] = {S(u"D")};
  tsrt_variant none = {0}, object = {0}, described = {0};
  check(run(record, u"Description", TSRT_INVOKE_LET, d, 1, &none, NULL) == TSRT_OK,
        "a record's Description is set");
  tsrt_variant_set_object(&object, record);
  check(tsrt_variant_change_type(&described, &object, TSRT_VT_STRING, NULL) == TSRT_OK &&
            string_is(&described, u"D"), "a record converts to text as its Description");
  tsrt_variant_clear(&object);
  tsrt_variant_clear(&described);
  tsrt_object_release(record);

  tsrt_variant amount = {0}, exact = {0};
  tsrt_variant_set_double(&amount, -12.5);
  check(tsrt_variant_change_type(&exact, &amount, TSRT_VT_DECIMAL, NULL) == TSRT_OK &&
            exact.type == TSRT_VT_DECIMAL && exact.value.decimal.low == 125 &&
            exact.value.decimal.high == 0 && exact.value.decimal.scale == 1 &&
            exact.value.decimal.negative, "a Decimal reads as sign, 96-bit magnitude and scale");
  tsrt_variant_clear(&exact);

  const tsrt_bounds table[2] = {{0, 1}, {1, 2}};
  tsrt_array* cells = tsrt_array_new(TSRT_VT_VARIANT, 2, table, NULL);
  check(cells && cells->count == 4 && cells->elements[3].type == TSRT_VT_EMPTY,
        "a new (column, row) table holds Empty cells");
  tsrt_variant original = {0}, copy = {0};
  tsrt_variant_set_array(&original, cells);
  tsrt_variant_set_utf8(&cells->elements[1], "cell", 4, NULL);
  tsrt_variant_copy(&copy, &original, NULL);
  tsrt_variant_set_long(&cells->elements[1], 7);
  check(copy.type == (TSRT_VT_ARRAY | TSRT_VT_VARIANT) && copy.value.array->bounds[1].upper == 2 &&
            string_is(&copy.value.array->elements[1], u"cell"),
        "a copied array is a value of its own");
  tsrt_variant_clear(&original);
  tsrt_variant_clear(&copy);

  tsrt_error* e = NULL;
  check(tsrt_array_new(TSRT_VT_ERROR, 0, NULL, &e) == NULL && e && e->number == 13,
        "an array of Error values cannot be made");
  tsrt_error_free(e);
  e = NULL;
  const tsrt_bounds huge[2] = {{0, 99999}, {0, 99999}};
  check(tsrt_array_new(TSRT_VT_LONG, 2, huge, &e) == NULL && e && e->number == 7,
        "an array beyond 2^31 - 1 elements is out of memory, before allocating it");
  tsrt_error_free(e);
  tsrt_variant ruble = {0};
  tsrt_variant_set_string(&ruble, u"рубль", 5, NULL);
  check(utf8_is(&ruble, "рубль"), "UTF-16 text reads back as UTF-8");
  tsrt_variant_clear(&ruble);
}

static int find_member(const tsrt_class* c, const char16_t* name, int32_t kind,
                       tsrt_member_info* m) {
  tsrt_class_info info;
  tsrt_class_describe(c, &info);
  for (size_t i = 0; i < info.member_count; ++i) {
    if (tsrt_class_member(c, i, m) && m->kind == kind && TEXT_IS(m->name, name)) return (int)i;
  }
  return -1;
}

static void type_information_is_readable(void) {
  const tsrt_class* dict = tsrt_class_find(u"tsruntimelib.clszkdictionary", 28);
  tsrt_class_info info;
  check(dict && tsrt_class_describe(dict, &info) && TEXT_IS(info.name, u"clsZKDictionary") &&
            TEXT_IS(info.prog_id, u"TSRuntimeLib.clsZKDictionary") &&
            TEXT_IS(info.default_member, u"Data") && info.creatable && info.enumerable &&
            info.event_count == 1,
        "a class is found by ProgID in any case and describes itself");
  tsrt_event_info event;
  tsrt_param_info param;
  check(tsrt_class_event(dict, 0, &event) && TEXT_IS(event.name, u"OnChanged") &&
            event.param_count == 1 && tsrt_class_event_param(dict, 0, 0, &param) &&
            TEXT_IS(param.name, u"ChangedItem"),
        "the dictionary's event and its parameter are listed");
  tsrt_variant_clear(&param.default_value);

  const tsrt_class* string_class = tsrt_class_find(u"clsZKString", 11);
  tsrt_member_info member;
  const int filter = find_member(string_class, u"Filter", TSRT_MEMBER_METHOD, &member);
  check(filter >= 0 && member.return_type == TSRT_VT_STRING && member.param_count == 5 &&
            tsrt_class_member_param(string_class, (size_t)filter, 4, &param) &&
            TEXT_IS(param.name, u"SelStart") && param.optional && param.writes_back &&
            param.type == TSRT_VT_LONG,
        "Filter's last parameter is an optional written-back Long");
  tsrt_variant_clear(&param.default_value);
  const int instr = find_member(string_class, u"InstrRight", TSRT_MEMBER_METHOD, &member);
  check(instr >= 0 && tsrt_class_member_param(string_class, (size_t)instr, 2, &param) &&
            long_is(&param.default_value, -1), "an optional parameter shows its default");
  tsrt_variant_clear(&param.default_value);
  const tsrt_class* root = tsrt_class_find(u"clsZKRunTimeLib", 15);
  check(find_member(root, u"GetObjString", TSRT_MEMBER_GET, &member) >= 0 &&
            member.return_type == TSRT_VT_OBJECT && member.return_class == string_class,
        "a property returning an object names the object's class");

  int sorted = 1;
  tsrt_class_info previous = {0};
  for (size_t i = 0; i < tsrt_class_count(); ++i) {
    tsrt_class_info current;
    if (!tsrt_class_describe(tsrt_class_at(i), &current)) sorted = 0;
    const size_t shorter = previous.name.length < current.name.length ? previous.name.length
                                                                      : current.name.length;
    if (i > 0 && memcmp(previous.name.chars, current.name.chars, 2 * shorter) > 0) sorted = 0;
    previous = current;
  }
  check(tsrt_class_count() >= 5 && sorted && tsrt_class_at(tsrt_class_count()) == NULL,
        "the registered classes are listed by name, and nothing past the end");
  check(tsrt_class_find(u"NoSuchClass", 11) == NULL &&
            !tsrt_class_member(string_class, 100000, &member),
        "a class or member that does not exist reads as none");
  int codes_found = 0;
  for (size_t i = 0; i < tsrt_enum_count(); ++i) {
    tsrt_text name;
    size_t members = 0;
    codes_found |= tsrt_enum_describe(i, &name, &members) &&
                   TEXT_IS(name, u"xeZK_ERROR_CODES") && members == 29;
  }
  check(codes_found, "the error code enumeration lists its 29 members");
}

/* Runs before anything loads the user-interface module: the listing is read first, then
 * the module loads when its class is looked up by name. */
static void module_classes_describe_themselves_once_loaded(void) {
  const size_t count = tsrt_class_count();
  const tsrt_class* timer = tsrt_class_find(u"CTimer", 6);
  tsrt_class_info info;
  check(timer && tsrt_class_describe(timer, &info) && info.event_count == 1 &&
            info.member_count >= 5,
        "a class of the user-interface module describes its members once the module loads");
  int listed = 0;
  for (size_t i = 0; i < tsrt_class_count(); ++i) listed |= tsrt_class_at(i) == timer;
  check(listed && tsrt_class_count() == count, "the listing then holds the loaded class");
}

/* A help string is there and ends in a full stop. */
static int has_help(int found, tsrt_text help) {
  return found && help.length > 1 && help.chars[help.length - 1] == u'.';
}

/* Every class, member, event, enumeration and enumeration member has one, the classes of
 * the user-interface module too; indexes past the end have none. */
static void help_strings_come_with_the_type_information(void) {
  const tsrt_class* string_class = tsrt_class_find(u"clsZKString", 11);
  tsrt_member_info member;
  tsrt_text help = {0};
  const int instr = find_member(string_class, u"InstrRight", TSRT_MEMBER_METHOD, &member);
  check(instr >= 0 && tsrt_class_member_help(string_class, (size_t)instr, &help) &&
            help.length > 20 && text_is(help.chars, 20, u"The position of the "),
        "a member's help string reads as the member's table gives it");
  size_t missing = 0, seen = 0;
  for (size_t i = 0; i < tsrt_class_count(); ++i) {
    const tsrt_class* c = tsrt_class_at(i);
    tsrt_class_info info = {0};
    tsrt_class_describe(c, &info);
    missing += !has_help(tsrt_class_help(c, &help), help);
    for (size_t m = 0; m < info.member_count; ++m, ++seen) {
      missing += !has_help(tsrt_class_member_help(c, m, &help), help);
    }
    for (size_t e = 0; e < info.event_count; ++e, ++seen) {
      missing += !has_help(tsrt_class_event_help(c, e, &help), help);
    }
    missing += tsrt_class_member_help(c, info.member_count, &help) +
               tsrt_class_event_help(c, info.event_count, &help);
  }
  for (size_t i = 0; i < tsrt_enum_count(); ++i) {
    size_t members = 0;
    tsrt_enum_describe(i, NULL, &members);
    missing += !has_help(tsrt_enum_help(i, &help), help);
    for (size_t m = 0; m < members; ++m, ++seen) {
      missing += !has_help(tsrt_enum_member_help(i, m, &help), help);
    }
    missing += tsrt_enum_member_help(i, members, &help);
  }
  missing += tsrt_class_help(NULL, &help) + tsrt_enum_help(tsrt_enum_count(), &help);
  check(missing == 0 && seen > 250, "every name listed carries a help string");
}

int main(void) {
  check(tsrt_version() == TSRT_C_VERSION, "the library implements the header's version");
  module_classes_describe_themselves_once_loaded();
  help_strings_come_with_the_type_information();
  results_of_string_members();
  errors_carry_five_fields();
  written_back_arguments_change_in_place();
  dictionary_and_its_events();
  timer_ticks_while_the_host_pumps();
  objects_returned_are_counted();
  storage_takes_objects_from_c();
  values_convert_as_the_host_runtime_does();
  type_information_is_readable();
  printf("%d passed, %d failed\n", passed, failed);
  return failed ? 1 : 0;
}
