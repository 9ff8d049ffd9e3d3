// Values built through the C interface from any bytes: every type code, array shapes and
// element types, decimal fields out of range. Copying and converting such a value either
// fails with a status or gives a value of the same shape; nothing leaks or crashes.
#include <cstdlib>
#include <cstring>

#include "tsruntime/tsruntime_c.h"

namespace {

// Reads the fuzzer's bytes in order; zeros once they run out.
struct Reader {
  const uint8_t* data;
  size_t size;
  template <class T>
  T Take() {
    T value{};
    const size_t n = size < sizeof(T) ? size : sizeof(T);
    std::memcpy(&value, data, n);
    data += n;
    size -= n;
    return value;
  }
};

// One value: a scalar of any type code, a string, or a small array of such values.
void Fill(Reader& in, tsrt_variant* v, int depth) {
  const uint16_t type = in.Take<uint16_t>();
  if ((type & TSRT_VT_ARRAY) && depth < 2) {
    tsrt_bounds bounds[2];
    const int32_t dimensions = in.Take<uint8_t>() % 3;
    for (int32_t d = 0; d < dimensions; ++d) {
      bounds[d].lower = in.Take<int8_t>();
      bounds[d].upper = bounds[d].lower + in.Take<uint8_t>() % 5 - 1;
    }
    tsrt_array* a = tsrt_array_new(type & ~TSRT_VT_ARRAY, dimensions, bounds, nullptr);
    if (!a) return;
    if (a->elements) {
      for (size_t k = 0; k < a->count; ++k) Fill(in, &a->elements[k], depth + 1);
    } else {
      for (size_t k = 0; k < a->count; ++k) a->bytes[k] = in.Take<uint8_t>();
    }
    tsrt_variant_set_array(v, a);
    return;
  }
  if (type == TSRT_VT_STRING) {
    const size_t length = in.Take<uint8_t>() % 16;
    uint16_t chars[16];
    for (size_t i = 0; i < length; ++i) chars[i] = in.Take<uint16_t>();
    tsrt_variant_set_string(v, chars, length, nullptr);
    return;
  }
  if (type == TSRT_VT_OBJECT || (type & TSRT_VT_ARRAY)) return;  // no handles from bytes
  tsrt_variant_clear(v);  // a new string array's elements hold "" already
  v->type = type;
  v->value.decimal.low = in.Take<uint64_t>();
  v->value.decimal.high = in.Take<uint32_t>();
  v->value.decimal.scale = in.Take<uint8_t>();
  v->value.decimal.negative = in.Take<uint8_t>();
}

// Whether `b`, a copy of `a`, has its shape. Elements of a typed array come back as the
// element type, whatever the caller stored there.
bool SameShape(const tsrt_variant& a, const tsrt_variant& b) {
  if (a.type != b.type) return false;
  if (!(a.type & TSRT_VT_ARRAY)) return true;
  const tsrt_array& x = *a.value.array;
  const tsrt_array& y = *b.value.array;
  if (x.count != y.count || x.dimensions != y.dimensions) return false;
  for (int32_t d = 0; d < x.dimensions; ++d) {
    if (x.bounds[d].lower != y.bounds[d].lower || x.bounds[d].upper != y.bounds[d].upper) {
      return false;
    }
  }
  for (size_t k = 0; x.elements && k < x.count; ++k) {
    if (x.element_type == TSRT_VT_VARIANT ? !SameShape(x.elements[k], y.elements[k])
                                          : y.elements[k].type != y.element_type) {
      return false;
    }
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Reader in{data, size};
  const uint16_t target = in.Take<uint16_t>();
  tsrt_variant value{}, copy{}, converted{};
  Fill(in, &value, 0);

  tsrt_error* error = nullptr;
  if (tsrt_variant_copy(&copy, &value, &error) == TSRT_OK) {
    if (error || !SameShape(value, copy)) std::abort();
  } else if (!error) {
    std::abort();  // a failure always comes with its error when one is asked for
  }
  tsrt_error_free(error);

  error = nullptr;
  if (tsrt_variant_change_type(&converted, &value, target, &error) == TSRT_OK) {
    if (target != TSRT_VT_VARIANT && converted.type != target) std::abort();
  }
  tsrt_error_free(error);
  tsrt_variant_clear(&value);
  tsrt_variant_clear(&copy);
  tsrt_variant_clear(&converted);
  return 0;
}
