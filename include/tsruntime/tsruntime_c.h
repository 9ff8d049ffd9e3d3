/* The library's C interface: every registered class, late bound, through C types only.
 *
 * Languages that call native code through a C foreign-function interface (Free Pascal,
 * Gambas, C#, plain C) reach the whole library here. Nothing in this header is C++ and
 * no exception ever leaves a function declared in it. The C++ interface and this one
 * reach the same objects: a class registered for late binding is usable here with no
 * code of its own.
 *
 * Ownership, in one rule per kind of thing (docs/c-interface.md has the long form):
 *
 *   - Object handles (`tsrt_object*`) are counted references. A function that hands one
 *     out (`tsrt_create`, an object in a result variant) gives the caller one count;
 *     `tsrt_object_release` returns it, `tsrt_object_addref` takes another.
 *   - A `tsrt_variant` owns what it holds: the characters of its string, its array, one
 *     count on its object. `tsrt_variant_clear` frees all of it and leaves Empty. Strings
 *     and arrays are allocated only by the library (`tsrt_variant_set_*`,
 *     `tsrt_array_new`); never free them with `free` or store foreign memory in them.
 *   - A `tsrt_error*` handed out by a failing call belongs to the caller, who frees it
 *     with `tsrt_error_free`.
 *   - Type information (`tsrt_text` in the info structs) is borrowed from the library and
 *     stays valid while the library is loaded; a parameter's default value is a copy the
 *     caller clears.
 *   - Text the library returns as UTF-8 (`tsrt_utf16_to_utf8`) is freed with `tsrt_free`.
 *
 * Threads: objects live on the thread that made them, as in the C++ interface; the type
 * information may be read from any thread.
 */
#ifndef TSRUNTIME_TSRUNTIME_C_H
#define TSRUNTIME_TSRUNTIME_C_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The version of this interface. Symbols carry the ELF version of the interface version
 * that added them (TSRT_C_1, TSRT_C_2); a later version only adds functions, so a program
 * built against an earlier one keeps working. Version 2 added the help strings. */
#define TSRT_C_VERSION 2
int32_t tsrt_version(void);

/* --- Status and errors -------------------------------------------------------------- */

typedef int32_t tsrt_status; /* TSRT_OK, or TSRT_FAILED with the error filled in */
#define TSRT_OK 0
#define TSRT_FAILED 1

/* A UTF-16 string with its length in code units. Strings the library hands out are also
 * followed by a 0 code unit (not counted), so they can be read as wide C strings. */
typedef struct tsrt_text {
  const uint16_t* chars;
  size_t length;
} tsrt_text;

/* An automation error, with the five fields the host runtime's `Err` object carries. */
typedef struct tsrt_error {
  int32_t number;
  tsrt_text source;
  tsrt_text description;
  tsrt_text help_file;
  int32_t help_context;
} tsrt_error;

/* Frees an error handed out by a failing call; NULL is allowed. */
void tsrt_error_free(tsrt_error* error);

/* Every function that can fail returns a status and takes `tsrt_error** error` last. On
 * failure `*error` receives a new error the caller frees; on success it is set to NULL.
 * Pass NULL to ignore the details. Out of memory is error 7, an exception the library
 * did not expect is error 51 ("Internal error"). */

/* --- Values ------------------------------------------------------------------------- */

/* The host runtime's type codes. An array is TSRT_VT_ARRAY | element type. */
enum {
  TSRT_VT_EMPTY = 0,
  TSRT_VT_NULL = 1,
  TSRT_VT_INTEGER = 2,  /* int16_t */
  TSRT_VT_LONG = 3,     /* int32_t */
  TSRT_VT_SINGLE = 4,   /* float */
  TSRT_VT_DOUBLE = 5,   /* double */
  TSRT_VT_CURRENCY = 6, /* int64_t, amount × 10,000 */
  TSRT_VT_DATE = 7,     /* double, days since 30 December 1899 */
  TSRT_VT_STRING = 8,
  TSRT_VT_OBJECT = 9,   /* NULL is Nothing */
  TSRT_VT_ERROR = 10,   /* an SCODE; 0x80020004 marks a missing argument */
  TSRT_VT_BOOLEAN = 11, /* 0 False, -1 True */
  TSRT_VT_VARIANT = 12, /* only as an array's element type or a declared type */
  TSRT_VT_DECIMAL = 14,
  TSRT_VT_BYTE = 17,
  TSRT_VT_ARRAY = 0x2000
};

typedef struct tsrt_object tsrt_object; /* opaque; a counted reference */
typedef struct tsrt_array tsrt_array;

/* A tagged value. Zero-filled memory is a valid Empty variant. Read the member the type
 * says; write through the tsrt_variant_set_* functions (scalars may also be written
 * directly, with `type` set to match, into an Empty variant). */
typedef struct tsrt_variant {
  uint16_t type;
  union {
    int16_t integer;
    int32_t long_value;
    float single;
    double dbl;
    int64_t currency;
    double date;
    struct {
      uint16_t* chars; /* followed by a 0 code unit */
      size_t length;
    } string;
    tsrt_object* object;
    int32_t error;
    int16_t boolean;
    struct {
      uint64_t low; /* magnitude bits 0-63 */
      uint32_t high; /* magnitude bits 64-95 */
      uint8_t scale; /* digits after the decimal point, 0-28 */
      uint8_t negative;
    } decimal;
    uint8_t byte;
    tsrt_array* array;
  } value;
} tsrt_variant;

/* An array: element type, bounds per dimension, elements first index fastest, so that a
 * (column, row) table keeps each column's cells together. `dimensions` 0 is a
 * never-dimensioned array; a dimension with upper < lower holds no elements. */
typedef struct tsrt_bounds {
  int32_t lower;
  int32_t upper;
} tsrt_bounds;

struct tsrt_array {
  uint16_t element_type; /* a scalar type code, or TSRT_VT_VARIANT */
  int32_t dimensions;
  tsrt_bounds* bounds;
  size_t count;
  tsrt_variant* elements; /* `count` values, each of the element type; NULL for bytes */
  uint8_t* bytes;         /* `count` bytes of a byte array; NULL otherwise */
};

/* Frees what the variant holds and leaves it Empty. */
void tsrt_variant_clear(tsrt_variant* v);
/* Replaces `dst` (cleared first) by a deep copy of `src`; objects gain a count. */
tsrt_status tsrt_variant_copy(tsrt_variant* dst, const tsrt_variant* src, tsrt_error** error);
/* `src` converted to `type` as the host runtime converts (13, 6, 94 when it cannot be),
 * into `dst`, which is cleared first. */
tsrt_status tsrt_variant_change_type(tsrt_variant* dst, const tsrt_variant* src,
                                     uint16_t type, tsrt_error** error);

/* Setters: each clears the variant first, and a NULL variant is ignored (or error 5 for
 * those that report). A string is copied. `set_object` takes a count of its own;
 * `set_array` takes the array over (the caller no longer frees it; NULL leaves Empty,
 * and the array the variant already holds stays as it is). */
void tsrt_variant_set_null(tsrt_variant* v);
void tsrt_variant_set_long(tsrt_variant* v, int32_t x);
void tsrt_variant_set_double(tsrt_variant* v, double x);
void tsrt_variant_set_currency(tsrt_variant* v, int64_t amount_times_10000);
void tsrt_variant_set_date(tsrt_variant* v, double days_since_1899_12_30);
void tsrt_variant_set_boolean(tsrt_variant* v, int truth);
void tsrt_variant_set_object(tsrt_variant* v, tsrt_object* object);
void tsrt_variant_set_array(tsrt_variant* v, tsrt_array* array);
tsrt_status tsrt_variant_set_string(tsrt_variant* v, const uint16_t* chars, size_t length,
                                    tsrt_error** error);
/* The same from UTF-8; malformed sequences become U+FFFD. */
tsrt_status tsrt_variant_set_utf8(tsrt_variant* v, const char* text, size_t length,
                                  tsrt_error** error);

/* A new array of `element_type` with `dimensions` bounds (0 for never dimensioned), every
 * element its type's zero value ("" for strings, Empty for variants). Returns NULL and
 * the error (7 beyond 2^31 - 1 elements, 13 for an element type arrays cannot have). */
tsrt_array* tsrt_array_new(uint16_t element_type, int32_t dimensions,
                           const tsrt_bounds* bounds, tsrt_error** error);
/* Frees an array that no variant holds; NULL is allowed. */
void tsrt_array_free(tsrt_array* array);

/* --- UTF-8 helpers for bindings ------------------------------------------------------ */

/* UTF-16 to a new 0-terminated UTF-8 string (unpaired surrogates become U+FFFD); its
 * byte length goes to `*length` unless NULL. NULL when out of memory. Free with
 * tsrt_free. */
char* tsrt_utf16_to_utf8(const uint16_t* chars, size_t length, size_t* utf8_length);
void tsrt_free(void* memory);

/* --- Objects ------------------------------------------------------------------------ */

/* A new object of the class with this ProgID ("TSRuntimeLib.clsZKString") or bare class
 * name, in any case; error 429 for a class that is not registered or not creatable. The
 * caller holds one count. */
tsrt_status tsrt_create(const uint16_t* prog_id, size_t length, tsrt_object** object,
                        tsrt_error** error);

/* Reference counting; both accept NULL. `release` returns the count left (0 when the
 * object was destroyed, or for NULL). */
void tsrt_object_addref(tsrt_object* object);
int32_t tsrt_object_release(tsrt_object* object);

enum {
  TSRT_INVOKE_CALL = 1, /* a method, or a property get */
  TSRT_INVOKE_LET = 2,  /* property let (set when only that exists or an object is given) */
  TSRT_INVOKE_SET = 4   /* property set (let when only that exists) */
};

/* One argument: positional when `name.chars` is NULL or `name.length` is 0, otherwise
 * named (any case). */
typedef struct tsrt_argument {
  tsrt_text name;
  tsrt_variant value;
} tsrt_argument;

/* Invokes `member` (NULL: the class's default member) of `object`. `result` may be NULL
 * to discard the result; it must not be one of the arguments. For a let or set the
 * assigned value is the last positional argument. A TSRT_VT_ERROR argument of 0x80020004
 * counts as left out.
 *
 * On success `*result` (which must not hold anything: it is overwritten) receives the
 * result, Empty for a member that returns nothing, and every argument the member writes
 * back has its `value` replaced in place (the old value cleared). On failure `*result` is
 * Empty and no argument changed. Errors: those of the member, all five fields kept; 91
 * for a NULL object; 438 no such member; 448 unknown named argument; 449 argument not
 * optional; 450 too many arguments; 13, 6, 94 for an argument of the wrong type (or a
 * type code or array the library cannot read); 5 for an unknown kind, or no `args` with
 * a count. */
tsrt_status tsrt_invoke(tsrt_object* object, const uint16_t* member, size_t member_length,
                        int32_t kind, tsrt_argument* args, size_t arg_count,
                        tsrt_variant* result, tsrt_error** error);

/* --- Events ------------------------------------------------------------------------- */

/* Called synchronously, on the thread that raised the event, with the event's name (0-
 * terminated too) and arguments. Everything is passed as a plain pointer or integer, so
 * that foreign-function interfaces without structs by value can take it. The arguments are the library's for the length of the call: the callback
 * may replace one (through the setters) to answer a by-reference event argument, and
 * must not keep pointers into them. The callback must not unwind through the library. */
typedef void (*tsrt_event_callback)(void* user, const uint16_t* event, size_t event_length,
                                    tsrt_variant* args, size_t arg_count);

/* Connects `callback` to every event the object raises, in connection order; `*cookie`
 * receives the number that disconnects it. The connection holds no count on the object
 * and ends when the object is destroyed. */
tsrt_status tsrt_connect(tsrt_object* object, tsrt_event_callback callback, void* user,
                         int32_t* cookie, tsrt_error** error);
/* Ends a connection; an unknown cookie is ignored. */
void tsrt_disconnect(tsrt_object* object, int32_t cookie);

/* Runs the events waiting on the calling thread's event loop: timer ticks (CTimer's
 * ThatTime) and window messages wait for it once a user-interface class is in use. A host
 * without an event loop of its own calls it while it waits; before that it does nothing. */
void tsrt_pump_waiting_messages(void);

/* --- Type information --------------------------------------------------------------- */

typedef struct tsrt_class tsrt_class; /* opaque; lives as long as the library */

enum {
  TSRT_MEMBER_METHOD = 1,
  TSRT_MEMBER_GET = 2,
  TSRT_MEMBER_LET = 4,
  TSRT_MEMBER_SET = 8
};

typedef struct tsrt_class_info {
  tsrt_text name;           /* "clsZKString" */
  tsrt_text prog_id;        /* "TSRuntimeLib.clsZKString" */
  int32_t creatable;        /* 1 when tsrt_create makes it */
  int32_t enumerable;       /* 1 when it has a NewEnum member */
  tsrt_text default_member; /* length 0 when it has none */
  size_t member_count;
  size_t event_count;
} tsrt_class_info;

typedef struct tsrt_member_info {
  tsrt_text name;
  int32_t kind;                    /* TSRT_MEMBER_* */
  uint16_t return_type;            /* TSRT_VT_EMPTY: returns nothing */
  const tsrt_class* return_class;  /* the class of an object result when known, or NULL */
  size_t param_count;              /* for a let or set, the assigned value comes last */
} tsrt_member_info;

typedef struct tsrt_param_info {
  tsrt_text name;
  uint16_t type; /* declared type; TSRT_VT_VARIANT for any, arrays with TSRT_VT_ARRAY */
  int32_t optional;
  int32_t writes_back;
  tsrt_variant default_value; /* a copy the caller clears; Missing when it has none */
} tsrt_param_info;

typedef struct tsrt_event_info {
  tsrt_text name;
  size_t param_count;
} tsrt_event_info;

/* Registered classes, sorted by name. `tsrt_class_at` is NULL past the end. */
size_t tsrt_class_count(void);
const tsrt_class* tsrt_class_at(size_t index);
/* By ProgID or bare name, any case; NULL when there is none. */
const tsrt_class* tsrt_class_find(const uint16_t* name, size_t length);
/* The class of an object; NULL for NULL. */
const tsrt_class* tsrt_object_class(const tsrt_object* object);

/* Each fills `*info` and returns 1, or returns 0 (leaving it untouched) for an index out
 * of range or a NULL class. */
int tsrt_class_describe(const tsrt_class* cls, tsrt_class_info* info);
int tsrt_class_member(const tsrt_class* cls, size_t member, tsrt_member_info* info);
int tsrt_class_member_param(const tsrt_class* cls, size_t member, size_t param,
                            tsrt_param_info* info);
int tsrt_class_event(const tsrt_class* cls, size_t event, tsrt_event_info* info);
int tsrt_class_event_param(const tsrt_class* cls, size_t event, size_t param,
                           tsrt_param_info* info);

/* Registered enumerations, sorted by name: their names and members. */
size_t tsrt_enum_count(void);
int tsrt_enum_describe(size_t index, tsrt_text* name, size_t* member_count);
int tsrt_enum_member(size_t index, size_t member, tsrt_text* name, int32_t* value);

/* Since version 2: the help strings, one line of English each, borrowed like the names.
 * Each fills `*help` and returns 1, or returns 0 (leaving it untouched) for an index out
 * of range or a NULL class. Every class, member, event, enumeration and enumeration
 * member of the library has one; a property's accessors share theirs.
 *   tsrt_class_member_help(tsrt_class_find(u"clsZKString", 11), 0, &help)
 *     -> "The position of the last SearchStr in Expression ..." */
int tsrt_class_help(const tsrt_class* cls, tsrt_text* help);
int tsrt_class_member_help(const tsrt_class* cls, size_t member, tsrt_text* help);
int tsrt_class_event_help(const tsrt_class* cls, size_t event, tsrt_text* help);
int tsrt_enum_help(size_t index, tsrt_text* help);
int tsrt_enum_member_help(size_t index, size_t member, tsrt_text* help);

#ifdef __cplusplus
}
#endif

#endif /* TSRUNTIME_TSRUNTIME_C_H */
