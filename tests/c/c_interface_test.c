// The C interface driven from C11: what only this boundary can get wrong. Every value type
// crossing both ways, counts, written-back arguments, errors with their five fields, events,
// arrays and type information; the members' own rules are pinned by the C++ tests.
// Prints "N passed, N failed".
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

// One argument of a table row: a text, or a scalar variant; `name` makes it named.
typedef struct {
  const char16_t *name, *text;
  tsrt_variant v;
} arg_row;
#define S(t) {NULL, t, {0}}
#define NAMED(n, vt, field, x) {n, NULL, {.type = vt, .value.field = x}}
#define V(vt, field, x) NAMED(NULL, vt, field, x)
#define L(n) V(TSRT_VT_LONG, long_value, n)
#define MISSING V(TSRT_VT_ERROR, error, (int32_t)0x80020004u)
#define MAX_ARGS 4

static void build_args(const arg_row* rows, size_t count, tsrt_argument* out) {
  memset(out, 0, count * sizeof *out);
  for (size_t i = 0; i < count; ++i) {
    if (rows[i].name) out[i].name = (tsrt_text){(const uint16_t*)rows[i].name, length_of(rows[i].name)};
    if (rows[i].text) tsrt_variant_set_string(&out[i].value, rows[i].text, length_of(rows[i].text), NULL);
    else tsrt_variant_copy(&out[i].value, &rows[i].v, NULL);
  }
}

// Calls `member` with arguments built from `rows`, then clears them.
static tsrt_status run(tsrt_object* o, const char16_t* member, int32_t kind, const arg_row* rows,
                       size_t argc, tsrt_variant* result, tsrt_error** e) {
  tsrt_argument args[MAX_ARGS];
  build_args(rows, argc, args);
  const tsrt_status status = call(o, member, kind, args, argc, result, e);
  clear_args(args, argc);
  return status;
}

// Equal type and value, arrays element by element. Scalars compare as the union's bytes:
// the library writes each into zero-filled memory, and the static rows are zero-filled.
static int same(const tsrt_variant* a, const tsrt_variant* b) {
  if (a->type != b->type) return 0;
  if (a->type == TSRT_VT_STRING) {
    return a->value.string.length == b->value.string.length &&
           memcmp(a->value.string.chars, b->value.string.chars, 2 * a->value.string.length) == 0;
  }
  if (!(a->type & TSRT_VT_ARRAY)) return memcmp(&a->value, &b->value, sizeof a->value) == 0;
  const tsrt_array *x = a->value.array, *y = b->value.array;
  int equal = x->dimensions == y->dimensions && x->count == y->count &&
              (!x->dimensions || memcmp(x->bounds, y->bounds, (size_t)x->dimensions * sizeof *x->bounds) == 0) &&
              (!x->bytes || memcmp(x->bytes, y->bytes, x->count) == 0);
  for (size_t i = 0; x->elements && equal && i < x->count; ++i) equal = same(&x->elements[i], &y->elements[i]);
  return equal;
}

// `value` stored in a dictionary and read back: C to the library and the library to C.
static int crosses_unchanged(const tsrt_variant* value) {
  tsrt_object* d = create(u"TSRuntimeLib.clsZKDictionary");
  tsrt_argument add[2] = {{{0}, {0}}, {{0}, {0}}};
  tsrt_variant_set_string(&add[0].value, u"k", 1, NULL);
  tsrt_variant_copy(&add[1].value, value, NULL);
  tsrt_variant back = {0};
  const int ok = call(d, u"Add", TSRT_INVOKE_CALL, add, 2, NULL, NULL) == TSRT_OK &&
                 call(d, NULL, TSRT_INVOKE_CALL, add, 1, &back, NULL) == TSRT_OK &&
                 same(&back, value);
  tsrt_variant_clear(&back);
  clear_args(add, 2);
  tsrt_object_release(d);
  return ok;
}

static void values_cross_both_ways_unchanged(void) {
  static const struct { const char* sentence; arg_row value; } scalars[] = {
      {"Empty", {0}},
      {"Null", V(TSRT_VT_NULL, long_value, 0)},
      {"Integer", V(TSRT_VT_INTEGER, integer, -2)},
      {"Long", L(-2147483647 - 1)},
      {"Single", V(TSRT_VT_SINGLE, single, 1.5f)},
      {"Double, negative zero kept", V(TSRT_VT_DOUBLE, dbl, -0.0)},
      {"Currency, its smallest", V(TSRT_VT_CURRENCY, currency, INT64_MIN)},
      {"Date before 30 December 1899", V(TSRT_VT_DATE, date, -1.25)},
      {"String: Cyrillic and beyond the BMP", S(u"ещё\U0001F600")},
      {"Error keeps its SCODE", V(TSRT_VT_ERROR, error, (int32_t)0x800A0005u)},
      {"Boolean True is -1", V(TSRT_VT_BOOLEAN, boolean, -1)},
      {"Decimal: sign, 96-bit magnitude, scale", {NULL, NULL, {.type = TSRT_VT_DECIMAL, .value.decimal = {5, 1, 28, 1}}}},
      {"Byte", V(TSRT_VT_BYTE, byte, 255)},
  };
  static const struct { const char* sentence; uint16_t type; int32_t dimensions;
      tsrt_bounds bounds[2]; } arrays[] = {
      {"a String array from 1", TSRT_VT_STRING, 1, {{1, 3}}},
      {"a Byte array's raw bytes, from -1", TSRT_VT_BYTE, 1, {{-1, 1}}},
      {"a (column, row) Variant table", TSRT_VT_VARIANT, 2, {{0, 1}, {1, 2}}},
      {"an array never dimensioned", TSRT_VT_STRING, 0, {{0}}},
      {"an array of 0 to -1", TSRT_VT_VARIANT, 1, {{0, -1}}},
  };
  for (size_t r = 0; r < sizeof scalars / sizeof scalars[0]; ++r) {
    tsrt_argument sent;
    build_args(&scalars[r].value, 1, &sent);
    check(crosses_unchanged(scalars[r].value.text ? &sent.value : &scalars[r].value.v),
          scalars[r].sentence);
    clear_args(&sent, 1);
  }
  for (size_t r = 0; r < sizeof arrays / sizeof arrays[0]; ++r) {
    tsrt_variant sent = {0};
    tsrt_variant_set_array(&sent, tsrt_array_new(arrays[r].type, arrays[r].dimensions,
                                                 arrays[r].bounds, NULL));
    tsrt_array* a = sent.value.array;
    for (size_t i = 0; i < a->count; ++i) {
      if (a->bytes) a->bytes[i] = (uint8_t)(100 * i + 55);
      else tsrt_variant_set_string(&a->elements[i], i % 2 ? u"ячейка" : u"7", i % 2 ? 6 : 1, NULL);
    }
    check(crosses_unchanged(&sent), arrays[r].sentence);
    tsrt_variant_clear(&sent);
  }
}

// Calls and their errors: five fields each, Empty result and nothing written back on
// failure. NULL `prog_id` calls no object, NULL `member` the default one; `source` NULL is a
// success giving `text`; `written`, when not 0, is the Long the third argument then holds.
static void calls_give_results_or_errors_with_five_fields(void) {
  static const char16_t kLib[] = u"ZKRuntimeLib";
#define SEL_START NAMED(u"SelStart", TSRT_VT_LONG, long_value, 4)
  static const struct { const char* sentence; const char16_t *prog_id, *member; int32_t kind;
      size_t argc; arg_row args[MAX_ARGS]; int32_t number; const char16_t *source, *text;
      int32_t written; } rows[] = {
      {"a written-back argument changes in place", u"clsZKString", u"Filter", TSRT_INVOKE_CALL, 3,
       {S(u"a-b-c"), S(u"-"), SEL_START}, 0, NULL, u"abc", 2},
      {"a call that fails writes nothing back", u"clsZKString", u"Filter", TSRT_INVOKE_CALL, 4,
       {S(u"a-b-c"), S(u"-"), SEL_START, {u"CompareType", u"not a number", {0}}}, 13, kLib, u"Type mismatch", 4},
      {"the missing-argument marker lets a parameter take its default", u"clsZKString", u"GetLeft",
       TSRT_INVOKE_CALL, 3, {S(u"a=b=c"), S(u"="), MISSING}, 0, NULL, u"a", 0},
      {"the class's own error keeps its number, source and description", u"clsZKString", u"InstrRight",
       TSRT_INVOKE_CALL, 3, {S(u"abc"), S(u"b"), L(-5)}, -2147220803, u"ZKRuntimeLib.clsZKString.InstrRight",
       u"SearchLen = -5", 0},
      {"an invocation kind that does not exist is error 5", u"clsZKString", u"GetLeft", 99, 0, {{0}}, 5, kLib,
       u"Invalid procedure call or argument", 0},
      {"a call on no object is error 91", NULL, u"Count", TSRT_INVOKE_CALL, 0, {{0}}, 91, kLib,
       u"Object variable or With block variable not set", 0},
      {"a class that is not registered is error 429", u"TSRuntimeLib.NoSuchClass", NULL, 0, 0, {{0}}, 429, kLib,
       u"ActiveX component can't create object", 0},
  };
  for (size_t r = 0; r < sizeof rows / sizeof rows[0]; ++r) {
    tsrt_object* o = NULL;
    tsrt_variant result = {0};
    tsrt_error* e = NULL;
    tsrt_status status = TSRT_OK;
    if (rows[r].prog_id) status = tsrt_create(rows[r].prog_id, length_of(rows[r].prog_id), &o, &e);
    tsrt_argument args[MAX_ARGS];
    build_args(rows[r].args, rows[r].argc, args);
    if (status == TSRT_OK) {
      status = call(o, rows[r].member, rows[r].kind, args, rows[r].argc, &result, &e);
    }
    check((rows[r].source ? status == TSRT_FAILED && e && e->number == rows[r].number &&
                                TEXT_IS(e->source, rows[r].source) &&
                                TEXT_IS(e->description, rows[r].text) && !e->help_file.length &&
                                e->help_context == 0 && result.type == TSRT_VT_EMPTY
                          : status == TSRT_OK && !e && string_is(&result, rows[r].text)) &&
              (!rows[r].written || (args[2].value.type == TSRT_VT_LONG &&
                                    args[2].value.value.long_value == rows[r].written)),
          rows[r].sentence);
    clear_args(args, rows[r].argc);
    tsrt_variant_clear(&result);
    tsrt_error_free(e);
    tsrt_object_release(o);
  }
}

typedef struct {
  const char16_t* event;
  int count;
  tsrt_variant item;
} event_log;

static void on_event(void* user, const uint16_t* event, size_t event_length, tsrt_variant* args,
                     size_t count) {
  event_log* log = user;
  if (!text_is(event, event_length, log->event)) return;
  ++log->count;
  if (count) tsrt_variant_copy(&log->item, &args[0], NULL);
}

static void events_reach_the_callback(void) {
  event_log changes = {u"OnChanged", 0, {0}}, ticks = {u"ThatTime", 0, {0}};
  tsrt_object *d = create(u"TSRuntimeLib.clsZKDictionary"), *t = create(u"TSRuntimeLib.CTimer");
  int32_t cookie = 0;
  const arg_row add[] = {S(u"два")}, let[] = {S(u"ДВА"), L(20)}, two[] = {L(2)}, zero[] = {L(0)};
  run(d, u"Add", TSRT_INVOKE_CALL, add, 1, NULL, NULL);
  check(tsrt_connect(d, on_event, &changes, &cookie, NULL) == TSRT_OK && cookie != 0 &&
            run(d, u"Data", TSRT_INVOKE_LET, let, 2, NULL, NULL) == TSRT_OK &&
            changes.count == 1 && string_is(&changes.item, u"ДВА"),
        "an event reaches the callback's user pointer with its argument");
  tsrt_disconnect(d, cookie);
  run(d, u"Data", TSRT_INVOKE_LET, let, 2, NULL, NULL);
  check(changes.count == 1, "a disconnected callback hears nothing more");
  tsrt_connect(t, on_event, &ticks, &cookie, NULL);
  run(t, u"Interval", TSRT_INVOKE_LET, two, 1, NULL, NULL);
  for (long spins = 0; ticks.count < 2 && spins < 50000000; ++spins) tsrt_pump_waiting_messages();
  check(ticks.count >= 2, "a timer's ThatTime reaches the callback while the host pumps");
  run(t, u"Interval", TSRT_INVOKE_LET, zero, 1, NULL, NULL);
  check(tsrt_object_release(t) == 0 && tsrt_object_release(d) == 0,
        "a stopped timer and a connected object go with their last count");
  tsrt_variant_clear(&changes.item);
}

// Objects with their counts; text, conversions and arrays with their errors.
static void objects_and_values_cross_convert_and_allocate(void) {
  tsrt_object* s = create(u"TSRuntimeLib.clsZKString");
  tsrt_variant held = {0};
  tsrt_variant_set_object(&held, s);
  tsrt_object_addref(s);
  check(crosses_unchanged(&held) && tsrt_object_release(s) == 2 &&
            tsrt_object_class(s) == tsrt_class_find(u"clsZKString", 11),
        "an object crosses as the same handle of its class; AddRef and Release count in step");
  tsrt_variant_clear(&held);
  check(tsrt_object_release(s) == 0 && tsrt_object_release(NULL) == 0,
        "the last count destroys the object; releasing no object is harmless");
  const tsrt_bounds huge[2] = {{0, 99999}, {0, 99999}};
  tsrt_variant ruble = {0}, number = {0};
  tsrt_error *e = NULL, *e7 = NULL, *e13 = NULL;
  tsrt_variant_set_utf8(&ruble, "рубль", 10, NULL);
  char* utf8 = tsrt_utf16_to_utf8(ruble.value.string.chars, ruble.value.string.length, NULL);
  check(string_is(&ruble, u"рубль") && utf8 && strcmp(utf8, "рубль") == 0, "UTF-8 both ways");
  check(tsrt_variant_change_type(&number, &ruble, TSRT_VT_LONG, &e) == TSRT_FAILED && e && e->number == 13,
        "text that is no number does not convert to Long: error 13");
  check(!tsrt_array_new(TSRT_VT_LONG, 2, huge, &e7) && e7 && e7->number == 7 &&
            !tsrt_array_new(TSRT_VT_ERROR, 0, NULL, &e13) && e13 && e13->number == 13,
        "an array beyond 2^31 - 1 elements is error 7, before allocating it; one of Errors 13");
  tsrt_free(utf8);
  tsrt_error_free(e);
  tsrt_error_free(e7);
  tsrt_error_free(e13);
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

// A help string is there and ends in a full stop.
static int has_help(int found, tsrt_text help) {
  return found && help.length > 1 && help.chars[help.length - 1] == u'.';
}

// Each type-information entry point once, and none past the end; the contents themselves are
// pinned by the C++ tests. Runs before anything loads the user-interface module, whose
// classes load when a handle of theirs is described.
static void type_information_and_help_are_readable(void) {
  const tsrt_class *timer = tsrt_class_find(u"CTimer", 6), *string_class = tsrt_class_find(u"clsZKString", 11),
                   *dict = tsrt_class_find(u"tsruntimelib.clszkdictionary", 28);
  tsrt_class_info ui = {0}, info = {0};
  tsrt_event_info event;
  tsrt_param_info param = {0};
  tsrt_member_info member;
  tsrt_text help = {0};
  check(timer && tsrt_class_describe(timer, &ui) && ui.event_count == 1 && ui.member_count >= 5 &&
            tsrt_class_at(0) && !tsrt_class_at(tsrt_class_count()) &&
            has_help(tsrt_class_help(timer, &help), help) && !tsrt_class_help(NULL, &help) &&
            has_help(tsrt_class_member_help(timer, ui.member_count - 1, &help), help) &&
            !tsrt_class_member_help(timer, ui.member_count, &help) &&
            has_help(tsrt_class_event_help(timer, 0, &help), help) && !tsrt_class_event_help(timer, 1, &help),
        "a class of the user-interface module describes itself and its help once the module loads");
  check(dict && tsrt_class_describe(dict, &info) && TEXT_IS(info.name, u"clsZKDictionary") &&
            TEXT_IS(info.prog_id, u"TSRuntimeLib.clsZKDictionary") &&
            TEXT_IS(info.default_member, u"Data") && info.creatable && info.enumerable &&
            tsrt_class_event(dict, 0, &event) && TEXT_IS(event.name, u"OnChanged") &&
            tsrt_class_event_param(dict, 0, 0, &param) && TEXT_IS(param.name, u"ChangedItem"),
        "a class found by ProgID in any case describes itself and its event");
  tsrt_variant_clear(&param.default_value);
  const int filter = find_member(string_class, u"Filter", TSRT_MEMBER_METHOD, &member);
  check(filter >= 0 && member.return_type == TSRT_VT_STRING && member.param_count == 5 &&
            tsrt_class_member_param(string_class, (size_t)filter, 4, &param) &&
            TEXT_IS(param.name, u"SelStart") && param.optional && param.writes_back &&
            param.type == TSRT_VT_LONG && param.default_value.type == TSRT_VT_ERROR,
        "Filter's last parameter is an optional written-back Long with no default");
  check(find_member(tsrt_class_find(u"clsZKRunTimeLib", 15), u"GetObjString", TSRT_MEMBER_GET,
                    &member) >= 0 && member.return_class == string_class &&
            !tsrt_class_find(u"NoSuchClass", 11) && !tsrt_class_member(string_class, 100000, &member),
        "a property returning an object names its class; what does not exist reads as none");
  size_t members = 0, last = tsrt_enum_count() - 1;
  check(tsrt_enum_describe(last, NULL, &members) && has_help(tsrt_enum_help(last, &help), help) &&
            !tsrt_enum_help(last + 1, &help) && has_help(tsrt_enum_member_help(last, members - 1, &help), help) &&
            !tsrt_enum_member_help(last, members, &help) && tsrt_enum_member(last, members - 1, NULL, NULL) &&
            !tsrt_enum_member(last, members, NULL, NULL),
        "an enumeration and its members carry help strings, none past the end");
}

int main(void) {
  check(tsrt_version() == TSRT_C_VERSION, "the library implements the header's version");
  type_information_and_help_are_readable();
  values_cross_both_ways_unchanged();
  calls_give_results_or_errors_with_five_fields();
  events_reach_the_callback();
  objects_and_values_cross_convert_and_allocate();
  printf("%d passed, %d failed\n", passed, failed);
  return failed ? 1 : 0;
}
