// Values across the C boundary: variants, arrays, strings and errors.
#include <cstring>
#include <memory>

#include "c_boundary.h"

namespace tsruntime::capi {
namespace {

constexpr uint16_t kArrayFlag = TSRT_VT_ARRAY;

// The element types an array can have in the host runtime.
bool IsElementType(uint16_t t) {
  return (t >= TSRT_VT_INTEGER && t <= TSRT_VT_OBJECT) || t == TSRT_VT_BOOLEAN ||
         t == TSRT_VT_VARIANT || t == TSRT_VT_DECIMAL || t == TSRT_VT_BYTE;
}

void FreeArray(tsrt_array* a) noexcept {
  if (!a) return;
  if (a->elements) {
    for (size_t k = 0; k < a->count; ++k) tsrt_variant_clear(&a->elements[k]);
  }
  std::free(a->elements);
  std::free(a->bytes);
  std::free(a->bounds);
  std::free(a);
}

struct ArrayDeleter {
  void operator()(tsrt_array* a) const noexcept { FreeArray(a); }
};
using ArrayPtr = std::unique_ptr<tsrt_array, ArrayDeleter>;

// An array with its bounds and zero-filled (Empty) storage for `count` elements.
ArrayPtr NewArray(uint16_t element, const std::vector<Bounds>& dims, size_t count) {
  ArrayPtr a(static_cast<tsrt_array*>(Allocate(sizeof(tsrt_array), true)));
  a->element_type = element;
  a->dimensions = static_cast<int32_t>(dims.size());
  a->count = count;
  if (!dims.empty()) {
    a->bounds = static_cast<tsrt_bounds*>(Allocate(dims.size() * sizeof(tsrt_bounds)));
    for (size_t d = 0; d < dims.size(); ++d) a->bounds[d] = {dims[d].lower, dims[d].upper};
  }
  if (element == TSRT_VT_BYTE) {
    a->bytes = static_cast<uint8_t*>(Allocate(count ? count : 1, true));
  } else {
    a->elements = static_cast<tsrt_variant*>(Allocate((count ? count : 1) * sizeof(tsrt_variant), true));
  }
  return a;
}

ArrayPtr ToCArray(const SafeArray& s) {
  const auto element = static_cast<uint16_t>(s.elementType());
  ArrayPtr a = NewArray(element, s.bounds(), static_cast<size_t>(s.size()));
  if (element == TSRT_VT_BYTE) {
    if (a->count) std::memcpy(a->bytes, s.bytes().data(), a->count);
  } else {
    for (size_t k = 0; k < a->count; ++k) ToC(s.elements()[k], &a->elements[k]);
  }
  return a;
}

std::vector<Bounds> BoundsOf(const tsrt_array& a) {
  if (a.dimensions < 0 || (a.dimensions > 0 && !a.bounds)) {
    RaiseRuntime(RuntimeError::kTypeMismatch);
  }
  std::vector<Bounds> dims;
  for (int32_t d = 0; d < a.dimensions; ++d) dims.push_back({a.bounds[d].lower, a.bounds[d].upper});
  return dims;
}

SafeArray FromCArray(const tsrt_array* a, uint16_t element) {
  if (!a || a->element_type != element || !IsElementType(element)) {
    RaiseRuntime(RuntimeError::kTypeMismatch);
  }
  const auto type = static_cast<VarType>(element);
  SafeArray s(type, BoundsOf(*a));
  if (static_cast<size_t>(s.size()) != a->count) RaiseRuntime(RuntimeError::kTypeMismatch);
  if (element == TSRT_VT_BYTE) {
    if (a->count && !a->bytes) RaiseRuntime(RuntimeError::kTypeMismatch);
    if (a->count) std::memcpy(s.bytes().data(), a->bytes, a->count);
    return s;
  }
  if (a->count && !a->elements) RaiseRuntime(RuntimeError::kTypeMismatch);
  for (size_t k = 0; k < a->count; ++k) {
    s.elements()[k] = ChangeType(FromC(a->elements[k]), type);
  }
  return s;
}

}  // namespace

void* Allocate(size_t bytes, bool zeroed) {
  void* p = zeroed ? std::calloc(1, bytes) : std::malloc(bytes);
  if (!p) throw std::bad_alloc();
  return p;
}

uint16_t* CopyChars(StringView s) {
  auto* p = static_cast<uint16_t*>(Allocate((s.size() + 1) * sizeof(uint16_t)));
  if (!s.empty()) std::memcpy(p, s.data(), s.size() * sizeof(uint16_t));
  p[s.size()] = 0;
  return p;
}

void ToC(const Variant& v, tsrt_variant* out) {
  auto& x = out->value;
  switch (v.type()) {
    case VarType::kInteger: x.integer = v.asInteger(); break;
    case VarType::kLong: x.long_value = v.asLong(); break;
    case VarType::kSingle: x.single = v.asSingle(); break;
    case VarType::kDouble: x.dbl = v.asDouble(); break;
    case VarType::kCurrency: x.currency = v.asCurrency().raw; break;
    case VarType::kDate: x.date = v.asDate().value; break;
    case VarType::kString:
      x.string.chars = CopyChars(v.asString());
      x.string.length = v.asString().size();
      break;
    case VarType::kObject:
      x.object = ToHandle(v.asObject().get());
      if (x.object) v.asObject()->AddRef();
      break;
    case VarType::kError: x.error = v.asError().scode; break;
    case VarType::kBoolean: x.boolean = v.asBoolean() ? -1 : 0; break;
    case VarType::kDecimal: {
      const Decimal& d = v.asDecimal();
      x.decimal.low = static_cast<uint64_t>(d.magnitude);
      x.decimal.high = static_cast<uint32_t>(d.magnitude >> 64);
      x.decimal.scale = d.scale;
      x.decimal.negative = d.negative ? 1 : 0;
      break;
    }
    case VarType::kByte: x.byte = v.asByte(); break;
    default:
      if (v.isArray()) x.array = ToCArray(v.asArray()).release();
      break;  // Empty and Null carry nothing
  }
  out->type = static_cast<uint16_t>(v.type());
}

Variant FromC(const tsrt_variant& v) {
  const auto& x = v.value;
  switch (v.type) {
    case TSRT_VT_EMPTY: return Variant();
    case TSRT_VT_NULL: return Variant::Null();
    case TSRT_VT_INTEGER: return Variant(x.integer);
    case TSRT_VT_LONG: return Variant(x.long_value);
    case TSRT_VT_SINGLE: return Variant(x.single);
    case TSRT_VT_DOUBLE: return Variant(x.dbl);
    case TSRT_VT_CURRENCY: return Variant(Currency::FromRaw(x.currency));
    case TSRT_VT_DATE: return Variant(Date{x.date});
    case TSRT_VT_STRING:
      if (!x.string.chars && x.string.length) RaiseRuntime(RuntimeError::kTypeMismatch);
      return Variant(String(ViewOf(x.string.chars, x.string.length)));
    case TSRT_VT_OBJECT: return Variant(Ref<Object>(FromHandle(x.object)));
    case TSRT_VT_ERROR: return Variant(ErrorValue{x.error});
    case TSRT_VT_BOOLEAN: return Variant(x.boolean != 0);
    case TSRT_VT_DECIMAL: {
      Decimal d;
      d.magnitude = (static_cast<unsigned __int128>(x.decimal.high) << 64) | x.decimal.low;
      d.scale = x.decimal.scale;
      d.negative = x.decimal.negative != 0;
      if (d.scale > 28) RaiseRuntime(RuntimeError::kOverflow);
      return Variant(d);
    }
    case TSRT_VT_BYTE: return Variant(x.byte);
    default:
      if (v.type & kArrayFlag) {
        return Variant(FromCArray(x.array, static_cast<uint16_t>(v.type & ~kArrayFlag)));
      }
      RaiseRuntime(RuntimeError::kTypeMismatch);
  }
}

void ReportCurrentException(tsrt_error** error) noexcept {
  try {
    try {
      throw;
    } catch (const Error& e) {
      if (!error) return;
      auto* out = static_cast<tsrt_error*>(Allocate(sizeof(tsrt_error), true));
      *error = out;  // tsrt_error_free copes with the fields not yet filled
      out->number = e.number();
      out->help_context = e.helpContext();
      const String* fields[] = {&e.source(), &e.description(), &e.helpFile()};
      tsrt_text* texts[] = {&out->source, &out->description, &out->help_file};
      for (int i = 0; i < 3; ++i) {
        texts[i]->chars = CopyChars(*fields[i]);
        texts[i]->length = fields[i]->size();
      }
    } catch (const std::bad_alloc&) {
      throw Error(7, FromAscii(kRuntimeErrorSource), RuntimeErrorText(7));
    } catch (...) {
      throw Error(51, FromAscii(kRuntimeErrorSource), FromAscii("Internal error"));
    }
  } catch (const Error&) {
    ReportCurrentException(error);
  } catch (...) {
    // The report itself ran out of memory; the status still says the call failed.
  }
}

}  // namespace tsruntime::capi

using namespace tsruntime;
using namespace tsruntime::capi;

extern "C" {

int32_t tsrt_version(void) { return TSRT_C_VERSION; }

void tsrt_error_free(tsrt_error* error) {
  if (!error) return;
  std::free(const_cast<uint16_t*>(error->source.chars));
  std::free(const_cast<uint16_t*>(error->description.chars));
  std::free(const_cast<uint16_t*>(error->help_file.chars));
  std::free(error);
}

void tsrt_variant_clear(tsrt_variant* v) {
  if (!v) return;
  if (v->type == TSRT_VT_STRING) {
    std::free(v->value.string.chars);
  } else if (v->type == TSRT_VT_OBJECT) {
    if (Object* o = FromHandle(v->value.object)) o->Release();
  } else if (v->type & kArrayFlag) {
    FreeArray(v->value.array);
  }
  std::memset(v, 0, sizeof *v);
}

tsrt_status tsrt_variant_copy(tsrt_variant* dst, const tsrt_variant* src, tsrt_error** error) {
  return tsrt_variant_change_type(dst, src, TSRT_VT_VARIANT, error);
}

tsrt_status tsrt_variant_change_type(tsrt_variant* dst, const tsrt_variant* src,
                                     uint16_t type, tsrt_error** error) {
  return Guard(error, [&] {
    if (!dst || !src) RaiseRuntime(RuntimeError::kInvalidCall);
    const Variant converted = ChangeType(FromC(*src), static_cast<VarType>(type));
    tsrt_variant_clear(dst);
    ToC(converted, dst);
  });
}

void tsrt_variant_set_null(tsrt_variant* v) {
  if (!v) return;
  tsrt_variant_clear(v);
  v->type = TSRT_VT_NULL;
}
void tsrt_variant_set_long(tsrt_variant* v, int32_t x) {
  if (!v) return;
  tsrt_variant_clear(v);
  v->type = TSRT_VT_LONG;
  v->value.long_value = x;
}
void tsrt_variant_set_double(tsrt_variant* v, double x) {
  if (!v) return;
  tsrt_variant_clear(v);
  v->type = TSRT_VT_DOUBLE;
  v->value.dbl = x;
}
void tsrt_variant_set_currency(tsrt_variant* v, int64_t amount_times_10000) {
  if (!v) return;
  tsrt_variant_clear(v);
  v->type = TSRT_VT_CURRENCY;
  v->value.currency = amount_times_10000;
}
void tsrt_variant_set_date(tsrt_variant* v, double days) {
  if (!v) return;
  tsrt_variant_clear(v);
  v->type = TSRT_VT_DATE;
  v->value.date = days;
}
void tsrt_variant_set_boolean(tsrt_variant* v, int truth) {
  if (!v) return;
  tsrt_variant_clear(v);
  v->type = TSRT_VT_BOOLEAN;
  v->value.boolean = truth ? -1 : 0;
}
void tsrt_variant_set_object(tsrt_variant* v, tsrt_object* object) {
  if (!v) return;
  tsrt_object_addref(object);  // first: `object` may be what `v` held
  tsrt_variant_clear(v);
  v->type = TSRT_VT_OBJECT;
  v->value.object = object;
}
void tsrt_variant_set_array(tsrt_variant* v, tsrt_array* array) {
  if (!v) return;
  if ((v->type & kArrayFlag) && v->value.array == array) return;  // already holds it
  tsrt_variant_clear(v);
  if (!array) return;
  v->type = static_cast<uint16_t>(TSRT_VT_ARRAY | array->element_type);
  v->value.array = array;
}

tsrt_status tsrt_variant_set_string(tsrt_variant* v, const uint16_t* chars, size_t length,
                                    tsrt_error** error) {
  return Guard(error, [&] {
    if (!v) RaiseRuntime(RuntimeError::kInvalidCall);
    uint16_t* copy = CopyChars(ViewOf(chars, chars ? length : 0));
    tsrt_variant_clear(v);
    v->type = TSRT_VT_STRING;
    v->value.string.chars = copy;
    v->value.string.length = chars ? length : 0;
  });
}

tsrt_status tsrt_variant_set_utf8(tsrt_variant* v, const char* text, size_t length,
                                  tsrt_error** error) {
  return Guard(error, [&] {
    if (!v) RaiseRuntime(RuntimeError::kInvalidCall);
    const String s = text ? FromUtf8(std::string_view(text, length)) : String();
    uint16_t* copy = CopyChars(s);
    tsrt_variant_clear(v);
    v->type = TSRT_VT_STRING;
    v->value.string.chars = copy;
    v->value.string.length = s.size();
  });
}

tsrt_array* tsrt_array_new(uint16_t element_type, int32_t dimensions,
                           const tsrt_bounds* bounds, tsrt_error** error) {
  tsrt_array* made = nullptr;
  Guard(error, [&] {
    if (!IsElementType(element_type)) RaiseRuntime(RuntimeError::kTypeMismatch);
    const tsrt_array shape{element_type, dimensions, const_cast<tsrt_bounds*>(bounds), 0,
                           nullptr, nullptr};
    // The library's own array checks the element count before anything is allocated.
    const SafeArray s(static_cast<VarType>(element_type), BoundsOf(shape));
    made = ToCArray(s).release();
  });
  return made;
}

void tsrt_array_free(tsrt_array* array) { FreeArray(array); }

char* tsrt_utf16_to_utf8(const uint16_t* chars, size_t length, size_t* utf8_length) {
  char* out = nullptr;
  Guard(nullptr, [&] {
    const std::string s = ToUtf8(ViewOf(chars, length));
    out = static_cast<char*>(Allocate(s.size() + 1));
    std::memcpy(out, s.c_str(), s.size() + 1);
    if (utf8_length) *utf8_length = s.size();
  });
  return out;
}

void tsrt_free(void* memory) { std::free(memory); }

}  // extern "C"
