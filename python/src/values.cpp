#include "values.h"

#include <bit>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>

#include "tsruntime/automation/convert.h"
#include "tsruntime/automation/err_object.h"

namespace tsruntime::python {
namespace {

// Nested lists deeper than this are refused rather than risking the stack (a list that
// contains itself would otherwise recurse forever).
constexpr int kMaxNesting = 64;

// Integers up to 2^53 survive the trip through a Double exactly.
constexpr long long kLargestExactDouble = 1LL << 53;

constexpr bool kLittleEndian = std::endian::native == std::endian::little;

py::object& MarkerSlot(Marker::Kind kind) {
  static py::object* slots[4] = {};  // leaked on purpose: outlives the interpreter
  if (!slots[kind]) slots[kind] = new py::object(py::cast(Marker{kind}));
  return *slots[kind];
}

py::module_ Import(const char* name) { return py::module_::import(name); }

// UTF-16 both ways, lone surrogates included: library strings are code-unit sequences
// and must come back exactly as they went in.
String ToString16(py::handle text) {
  py::object bytes = py::reinterpret_steal<py::object>(PyUnicode_AsEncodedString(
      text.ptr(), kLittleEndian ? "utf-16-le" : "utf-16-be", "surrogatepass"));
  if (!bytes) throw py::error_already_set();
  char* data = nullptr;
  Py_ssize_t size = 0;
  if (PyBytes_AsStringAndSize(bytes.ptr(), &data, &size) != 0) throw py::error_already_set();
  String out(static_cast<size_t>(size) / 2, u'\0');
  std::memcpy(out.data(), data, out.size() * sizeof(char16_t));
  return out;
}

py::object FromString16(const String& text) {
  int byte_order = kLittleEndian ? -1 : 1;  // fixed order: a leading U+FEFF stays text
  PyObject* s = PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(text.data()),
                                      static_cast<Py_ssize_t>(text.size() * 2),
                                      "surrogatepass", &byte_order);
  if (!s) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(s);
}

Variant FromInt(py::handle value) {
  int overflow = 0;
  const long long x = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
  if (x == -1 && PyErr_Occurred()) throw py::error_already_set();
  if (overflow == 0 && x >= std::numeric_limits<int32_t>::min() &&
      x <= std::numeric_limits<int32_t>::max()) {
    return Variant(static_cast<int32_t>(x));
  }
  if (overflow == 0 && x >= -kLargestExactDouble && x <= kLargestExactDouble) {
    return Variant(static_cast<double>(x));
  }
  RaiseRuntime(RuntimeError::kOverflow);
}

// decimal.Decimal to Currency: four decimals, halves to even, as the host rounds.
Currency CurrencyFromDecimal(py::handle value) {
  if (!value.attr("is_finite")().cast<bool>()) RaiseRuntime(RuntimeError::kOverflow);
  // Beyond 10^20 the amount is out of range anyway; stop before building a huge int.
  if (!value.attr("is_zero")().cast<bool>() && value.attr("adjusted")().cast<long long>() > 20) {
    RaiseRuntime(RuntimeError::kOverflow);
  }
  // Rounded once, from the exact value, whatever the caller's decimal context says.
  py::module_ decimal = Import("decimal");
  py::object context = decimal.attr("Context")(py::arg("prec") = 60,
                                               py::arg("rounding") = decimal.attr("ROUND_HALF_EVEN"));
  py::object rounded = value.attr("quantize")(decimal.attr("Decimal")("0.0001"),
                                              py::arg("context") = context);
  py::int_ raw(rounded.attr("scaleb")(4, py::arg("context") = context));
  int overflow = 0;
  const long long x = PyLong_AsLongLongAndOverflow(raw.ptr(), &overflow);
  if (overflow != 0) RaiseRuntime(RuntimeError::kOverflow);
  return Currency::FromRaw(x);
}

py::object DecimalFromCurrency(Currency value) {
  const bool negative = value.raw < 0;
  const unsigned long long magnitude =
      negative ? 0ULL - static_cast<unsigned long long>(value.raw)
               : static_cast<unsigned long long>(value.raw);
  std::string units = std::to_string(magnitude / 10000);
  std::string fraction = std::to_string(magnitude % 10000 + 10000).substr(1);
  while (!fraction.empty() && fraction.back() == '0') fraction.pop_back();
  std::string text = (negative ? "-" : "") + units + (fraction.empty() ? "" : "." + fraction);
  return Import("decimal").attr("Decimal")(text);
}

Date DateFromPython(py::handle value, bool has_time) {
  DateParts p;
  p.year = value.attr("year").cast<int>();
  p.month = value.attr("month").cast<int>();
  p.day = value.attr("day").cast<int>();
  int microseconds = 0;
  if (has_time) {
    p.hour = value.attr("hour").cast<int>();
    p.minute = value.attr("minute").cast<int>();
    p.second = value.attr("second").cast<int>();
    microseconds = value.attr("microsecond").cast<int>();
  }
  Date d = Date::FromParts(p);
  // Before 30 December 1899 the time of day counts away from zero.
  const double fraction = microseconds / 86400e6;
  d.value += d.value < 0 ? -fraction : fraction;
  return d;
}

py::object DateToPython(Date value) {
  // 1 January 100 to 31 December 9999, the range every date of the library lies in.
  if (!(value.value >= -657434.0 && value.value < 2958466.0)) {
    RaiseRuntime(RuntimeError::kOverflow);
  }
  const DateParts p = value.ToParts();
  return Import("datetime").attr("datetime")(p.year, p.month, p.day, p.hour, p.minute,
                                             p.second);
}

Variant FromSequence(py::handle value, int depth);
Variant ToVariantAt(py::handle value, int depth);

// A caught AutomationError crosses as the host's Err object, its five fields converted
// as arguments are.
Variant ErrObjectFromPython(py::handle error, int depth) {
  auto field = [&](const char* name) { return ToVariantAt(error.attr(name), depth + 1); };
  return Variant(New<ErrObject>(Error(ToLong(field("number")), ToString(field("source")),
                                      ToString(field("description")),
                                      ToString(field("helpfile")),
                                      ToLong(field("helpcontext")))));
}

Variant ToVariantAt(py::handle value, int depth) {
  if (value.is_none()) return Variant();
  if (py::isinstance<Marker>(value)) {
    switch (value.cast<const Marker&>().kind) {
      case Marker::kNull: return Variant::Null();
      case Marker::kEmpty: return Variant();
      case Marker::kMissing: return Variant::Missing();
      case Marker::kNothing: return Variant::Nothing();
    }
  }
  if (PyBool_Check(value.ptr())) return Variant(value.ptr() == Py_True);
  if (PyLong_Check(value.ptr())) return FromInt(value);
  if (PyFloat_Check(value.ptr())) return Variant(PyFloat_AsDouble(value.ptr()));
  if (PyUnicode_Check(value.ptr())) return Variant(ToString16(value));
  if (PyBytes_Check(value.ptr()) || PyByteArray_Check(value.ptr())) {
    const std::string bytes = PyBytes_Check(value.ptr())
                                  ? value.cast<std::string>()
                                  : std::string(PyByteArray_AsString(value.ptr()),
                                                static_cast<size_t>(PyByteArray_Size(value.ptr())));
    return Variant(SafeArray::FromBytes(
        std::span(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size())));
  }
  if (py::isinstance<ArrayHolder>(value)) return Variant(value.cast<const ArrayHolder&>().array);
  if (py::isinstance<ErrorMarker>(value)) {
    return Variant(ErrorValue{value.cast<const ErrorMarker&>().scode});
  }
  if (py::isinstance<ObjectHandle>(value)) return Variant(value.cast<const ObjectHandle&>().object);
  const Hooks& hooks = GetHooks();
  if (hooks.dispatch_class && py::isinstance(value, hooks.dispatch_class)) {
    return Variant(value.attr("_handle").cast<const ObjectHandle&>().object);
  }
  if (hooks.error_class && py::isinstance(value, hooks.error_class)) {
    return ErrObjectFromPython(value, depth);
  }
  py::module_ datetime = Import("datetime");
  if (py::isinstance(value, datetime.attr("datetime"))) return Variant(DateFromPython(value, true));
  if (py::isinstance(value, datetime.attr("date"))) return Variant(DateFromPython(value, false));
  if (py::isinstance(value, Import("decimal").attr("Decimal"))) {
    return Variant(CurrencyFromDecimal(value));
  }
  if (PyList_Check(value.ptr()) || PyTuple_Check(value.ptr())) return FromSequence(value, depth);
  if (PyIndex_Check(value.ptr())) {
    return FromInt(py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr())));
  }
  throw py::type_error("cannot pass a value of type '" +
                       py::str(py::type::handle_of(value).attr("__name__")).cast<std::string>() +
                       "' to the library");
}

Variant FromSequence(py::handle value, int depth) {
  if (depth >= kMaxNesting) throw py::value_error("lists nested too deeply to pass to the library");
  py::sequence items = py::reinterpret_borrow<py::sequence>(value);
  const size_t n = items.size();
  if (n > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
    RaiseRuntime(RuntimeError::kOverflow);
  }
  std::vector<Variant> elements;
  elements.reserve(n);
  for (size_t i = 0; i < n; ++i) elements.push_back(ToVariantAt(items[i], depth + 1));
  return Variant(SafeArray::FromVariants(std::move(elements)));
}

}  // namespace

Hooks& GetHooks() {
  static Hooks* hooks = new Hooks();  // leaked on purpose: outlives the interpreter
  return *hooks;
}

py::object MarkerObject(Marker::Kind kind) { return MarkerSlot(kind); }

Variant ToVariant(py::handle value) { return ToVariantAt(value, 0); }

py::object ToPython(const Variant& value) {
  switch (value.type()) {
    case VarType::kEmpty: return py::none();
    case VarType::kNull: return MarkerObject(Marker::kNull);
    case VarType::kInteger: return py::int_(value.asInteger());
    case VarType::kLong: return py::int_(value.asLong());
    case VarType::kByte: return py::int_(value.asByte());
    case VarType::kSingle: return py::float_(static_cast<double>(value.asSingle()));
    case VarType::kDouble: return py::float_(value.asDouble());
    case VarType::kCurrency: return DecimalFromCurrency(value.asCurrency());
    case VarType::kDate: return DateToPython(value.asDate());
    case VarType::kString: return FromString16(value.asString());
    case VarType::kBoolean: return py::bool_(value.asBoolean());
    case VarType::kDecimal:
      return Import("decimal").attr("Decimal")(value.asDecimal().ToPlainText());
    case VarType::kError:
      if (value.isMissing()) return MarkerObject(Marker::kMissing);
      return py::cast(ErrorMarker{value.asError().scode});
    case VarType::kObject: {
      const Ref<Object>& object = value.asObject();
      if (!object) return py::none();
      const Hooks& hooks = GetHooks();
      if (!hooks.dispatch_class) return py::cast(ObjectHandle{object});
      return hooks.dispatch_class(ObjectHandle{object});
    }
    default: break;
  }
  if (value.isArray()) {
    const SafeArray& array = value.asArray();
    if (array.elementType() == VarType::kByte && array.dimensions() == 1 && array.lbound() == 0) {
      const auto& bytes = array.bytes();
      return py::bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    return py::cast(ArrayHolder{array});
  }
  // A type code the library never produces; say so rather than guess.
  throw py::type_error("the library returned a value of unknown type " +
                       std::to_string(TypeCode(value.type())));
}

void RaiseInPython(const Error& error) {
  const Hooks& hooks = GetHooks();
  if (!hooks.error_class) {
    PyErr_SetString(PyExc_RuntimeError, error.what());
    return;
  }
  try {
    py::object exception = hooks.error_class(error.number(), FromString16(error.source()),
                                             FromString16(error.description()),
                                             FromString16(error.helpFile()), error.helpContext());
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(exception.ptr())), exception.ptr());
  } catch (py::error_already_set& failed) {
    failed.restore();  // the failure to build the exception is what Python sees
  }
}

void BindValues(py::module_& m) {
  py::class_<Marker>(m, "Marker", "The type of the markers Null, Empty, Missing and Nothing.")
      .def("__repr__",
           [](const Marker& marker) {
             static const char* const kNames[] = {"Null", "Empty", "Missing", "Nothing"};
             return std::string("tsruntime.") + kNames[marker.kind];
           })
      .def("__bool__", [](const Marker&) { return false; });
  m.attr("Null") = MarkerObject(Marker::kNull);
  m.attr("Empty") = MarkerObject(Marker::kEmpty);
  m.attr("Missing") = MarkerObject(Marker::kMissing);
  m.attr("Nothing") = MarkerObject(Marker::kNothing);

  py::class_<ErrorMarker>(m, "ErrorValue", "An Error-typed value: the SCODE it carries.")
      .def(py::init([](int64_t scode) {
             // SCODEs are written in hex as unsigned; keep them as the signed 32-bit value.
             if (scode < std::numeric_limits<int32_t>::min() ||
                 scode > std::numeric_limits<uint32_t>::max()) {
               throw py::value_error("an SCODE is a 32-bit value");
             }
             return ErrorMarker{static_cast<int32_t>(static_cast<uint32_t>(scode))};
           }),
           py::arg("scode"))
      .def_readonly("scode", &ErrorMarker::scode)
      .def("__eq__",
           [](const ErrorMarker& a, const py::object& b) {
             return py::isinstance<ErrorMarker>(b) && a.scode == b.cast<const ErrorMarker&>().scode;
           })
      .def("__hash__", [](const ErrorMarker& e) { return py::hash(py::int_(e.scode)); })
      .def("__repr__", [](const ErrorMarker& e) {
        char text[48];
        std::snprintf(text, sizeof text, "tsruntime.ErrorValue(0x%08X)",
                      static_cast<uint32_t>(e.scode));
        return std::string(text);
      });
}

}  // namespace tsruntime::python
