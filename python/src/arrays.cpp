// The `SafeArray` type: a library array seen from Python, bounds and element type kept.
//
// Two ways in: by position, as any Python sequence (a[0] is the first element whatever
// the lower bound, len(a) counts every element, iteration runs in storage order), and by
// the host's own indexes through get/set (a.get(-1) on an array with bounds -1 to -1;
// a.get(column, row) on a table). Storage runs first index fastest; tolist() nests by
// dimension, first index outermost, so a table's tolist()[column][row] is get(column, row).
#include <pybind11/stl.h>

#include <limits>
#include <string>

#include "values.h"
#include "tsruntime/automation/convert.h"

namespace tsruntime::python {
namespace {

// The host runtime's limit on dimensions.
constexpr size_t kMaxDimensions = 60;

VarType CheckedElementType(int code) {
  switch (static_cast<VarType>(code)) {
    case VarType::kInteger:
    case VarType::kLong:
    case VarType::kSingle:
    case VarType::kDouble:
    case VarType::kCurrency:
    case VarType::kDate:
    case VarType::kString:
    case VarType::kObject:
    case VarType::kError:
    case VarType::kBoolean:
    case VarType::kVariant:
    case VarType::kDecimal:
    case VarType::kByte:
      return static_cast<VarType>(code);
    default:
      throw py::value_error("no array can hold elements of type " + std::to_string(code));
  }
}

// Allocation failures become the host's "Out of memory" rather than a bare MemoryError
// with no number.
template <class F>
auto Allocating(F&& make) -> decltype(make()) {
  try {
    return make();
  } catch (const std::bad_alloc&) {
    RaiseRuntime(RuntimeError::kOutOfMemory);
  } catch (const std::length_error&) {
    RaiseRuntime(RuntimeError::kOutOfMemory);
  }
}

std::vector<Bounds> CheckedBounds(const std::vector<std::pair<int64_t, int64_t>>& pairs) {
  if (pairs.empty() || pairs.size() > kMaxDimensions) {
    throw py::value_error("an array has 1 to 60 dimensions");
  }
  std::vector<Bounds> dims;
  unsigned __int128 total = 1;
  for (const auto& [lower, upper] : pairs) {
    constexpr int64_t kMin = std::numeric_limits<int32_t>::min();
    constexpr int64_t kMax = std::numeric_limits<int32_t>::max();
    if (lower < kMin || lower > kMax || upper < kMin || upper > kMax) {
      RaiseRuntime(RuntimeError::kOverflow);
    }
    // As `ReDim a(5 To 2)`: an upper bound may sit one below the lower, no further.
    if (upper < lower - 1) RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
    Bounds b{static_cast<int32_t>(lower), static_cast<int32_t>(upper)};
    total *= static_cast<unsigned __int128>(b.count());
    if (total > std::numeric_limits<int32_t>::max()) RaiseRuntime(RuntimeError::kOutOfMemory);
    dims.push_back(b);
  }
  return dims;
}

Variant ElementAt(const SafeArray& a, int64_t offset) {
  if (a.elementType() == VarType::kByte) return Variant(a.bytes()[static_cast<size_t>(offset)]);
  return a.elements()[static_cast<size_t>(offset)];
}

// A host index; one outside the 32-bit range is simply out of range (9).
int32_t HostIndex(py::handle index) {
  const auto i = index.cast<int64_t>();
  if (i < std::numeric_limits<int32_t>::min() || i > std::numeric_limits<int32_t>::max()) {
    RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
  }
  return static_cast<int32_t>(i);
}

// Dimension `dim` and those after it, from storage offset `base`; the first index
// varies fastest in storage, so dimension k steps by the product of the counts before it.
py::list Level(const SafeArray& a, const std::vector<int64_t>& strides, size_t dim,
               int64_t base) {
  py::list items;
  const auto& dims = a.bounds();
  for (int64_t i = 0; i < dims[dim].count(); ++i) {
    const int64_t offset = base + i * strides[dim];
    if (dim + 1 == dims.size()) {
      items.append(ToPython(ElementAt(a, offset)));
    } else {
      items.append(Level(a, strides, dim + 1, offset));
    }
  }
  return items;
}

py::list ToList(const SafeArray& a) {
  if (!a.isDimensioned()) return py::list();
  const auto& dims = a.bounds();
  std::vector<int64_t> strides(dims.size(), 1);
  for (size_t k = 1; k < dims.size(); ++k) strides[k] = strides[k - 1] * dims[k - 1].count();
  return Level(a, strides, 0, 0);
}

std::string Describe(const SafeArray& a) {
  std::string text = "SafeArray(" + ToUtf8(TypeName(a.elementType())) + ", [";
  for (size_t k = 0; k < a.bounds().size(); ++k) {
    if (k) text += ", ";
    text += "(" + std::to_string(a.bounds()[k].lower) + ", " +
            std::to_string(a.bounds()[k].upper) + ")";
  }
  text += "], " + py::repr(ToList(a)).cast<std::string>() + ")";
  return text;
}

}  // namespace

void BindArrays(py::module_& m) {
  py::class_<ArrayHolder>(m, "SafeArray", R"(An array of the library, with its bounds.

SafeArray(items=(), lbound=0, vartype=12) makes a one-dimensional array of `items`
converted to the element type `vartype` (12 Variant, 8 String, 3 Long...), its first
index `lbound`. Position access (a[0], len(a), iteration) ignores the bounds; get/set
take the host's indexes.)")
      .def(py::init([](const py::sequence& items, int64_t lbound, int vartype) {
             const VarType element = CheckedElementType(vartype);
             const auto n = static_cast<int64_t>(items.size());
             std::vector<Bounds> dims = CheckedBounds({{lbound, lbound + n - 1}});
             return Allocating([&] {
               ArrayHolder h{SafeArray(element, std::move(dims))};
               for (int64_t i = 0; i < n; ++i) {
                 h.array.set(static_cast<int32_t>(lbound + i), ToVariant(items[static_cast<size_t>(i)]));
               }
               return h;
             });
           }),
           py::arg("items") = py::tuple(), py::arg("lbound") = 0, py::arg("vartype") = 12)
      .def_static(
          "dimensioned",
          [](const std::vector<std::pair<int64_t, int64_t>>& bounds, int vartype) {
            const VarType element = CheckedElementType(vartype);
            std::vector<Bounds> dims = CheckedBounds(bounds);
            return Allocating([&] { return ArrayHolder{SafeArray(element, std::move(dims))}; });
          },
          py::arg("bounds"), py::arg("vartype") = 12,
          "An array with the given (lower, upper) bounds per dimension, every element "
          "its type's zero value (Empty for Variant, \"\" for String, 0 for numbers).")
      .def_static(
          "undimensioned",
          [](int vartype) { return ArrayHolder{SafeArray(CheckedElementType(vartype))}; },
          py::arg("vartype") = 12,
          "A never-dimensioned array: no bounds at all, unlike one with no elements.")
      .def_property_readonly(
          "vartype", [](const ArrayHolder& h) { return TypeCode(h.array.elementType()); },
          "The element type code (8 String, 12 Variant...).")
      .def_property_readonly(
          "typename", [](const ArrayHolder& h) { return ToUtf8(TypeName(h.array.type())); },
          "The host's name of the array type, such as \"String()\".")
      .def_property_readonly(
          "dims", [](const ArrayHolder& h) { return h.array.dimensions(); },
          "Number of dimensions; 0 for a never-dimensioned array.")
      .def_property_readonly(
          "bounds",
          [](const ArrayHolder& h) {
            py::list out;
            for (const Bounds& b : h.array.bounds()) out.append(py::make_tuple(b.lower, b.upper));
            return out;
          },
          "(lower, upper) of each dimension.")
      .def(
          "lbound", [](const ArrayHolder& h, int dim) { return h.array.lbound(dim); },
          py::arg("dim") = 1, "Lower bound of dimension `dim` (from 1); error 9 if none.")
      .def(
          "ubound", [](const ArrayHolder& h, int dim) { return h.array.ubound(dim); },
          py::arg("dim") = 1, "Upper bound of dimension `dim` (from 1); error 9 if none.")
      .def("__len__", [](const ArrayHolder& h) { return h.array.size(); })
      .def("__getitem__",
           [](const ArrayHolder& h, int64_t position) {
             const int64_t n = h.array.size();
             if (position < 0) position += n;
             if (position < 0 || position >= n) throw py::index_error("SafeArray position out of range");
             return ToPython(ElementAt(h.array, position));
           })
      .def("__getitem__",
           [](const ArrayHolder& h, const py::slice& slice) {
             size_t start = 0, stop = 0, step = 0, length = 0;
             if (!slice.compute(static_cast<size_t>(h.array.size()), &start, &stop, &step, &length)) {
               throw py::error_already_set();
             }
             py::list out;
             for (size_t i = 0; i < length; ++i) {
               out.append(ToPython(ElementAt(h.array, static_cast<int64_t>(start + i * step))));
             }
             return out;
           })
      .def("__iter__",
           [](const ArrayHolder& h) {
             py::list flat;
             for (int64_t i = 0; i < h.array.size(); ++i) flat.append(ToPython(ElementAt(h.array, i)));
             return py::iter(flat);
           })
      .def(
          "get",
          [](const ArrayHolder& h, const py::args& index) {
            switch (index.size()) {
              case 1: return ToPython(h.array.get(HostIndex(index[0])));
              case 2: return ToPython(h.array.get(HostIndex(index[0]), HostIndex(index[1])));
              default: RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
            }
          },
          "The element at the host's indexes: a.get(i), or a.get(column, row) for a table.")
      .def(
          "set",
          [](ArrayHolder& h, const py::args& args) {
            if (args.size() < 2) throw py::type_error("set(index..., value)");
            switch (args.size()) {
              case 2: return h.array.set(HostIndex(args[0]), ToVariant(args[1]));
              case 3: return h.array.set(HostIndex(args[0]), HostIndex(args[1]), ToVariant(args[2]));
              default: RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
            }
          },
          "Stores a value at the host's indexes, converted to the element type (errors 13, "
          "6 or 94 when it cannot be): a.set(i, value) or a.set(column, row, value).")
      .def("tolist", [](const ArrayHolder& h) { return ToList(h.array); },
           "The elements as nested lists, first index outermost.")
      .def(
          "tobytes",
          [](const ArrayHolder& h) {
            if (h.array.elementType() != VarType::kByte) throw py::type_error("not a byte array");
            return py::bytes(reinterpret_cast<const char*>(h.array.bytes().data()),
                             h.array.bytes().size());
          },
          "The bytes of a byte array, whatever its bounds.")
      .def("__eq__",
           [](const ArrayHolder& a, const py::object& b) {
             return py::isinstance<ArrayHolder>(b) && a.array == b.cast<const ArrayHolder&>().array;
           })
      .def("__repr__", [](const ArrayHolder& h) { return Describe(h.array); })
      .attr("__hash__") = py::none();
}

}  // namespace tsruntime::python
