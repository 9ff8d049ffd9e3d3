// `tsruntime._tsruntime`: the dispatch layer as Python sees it. The package's
// __init__.py builds the win32com-style convention on top; nothing here knows any class.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <memory>
#include <optional>

#include "tsruntime/automation/dispatch.h"
#include "python_object.h"
#include "tsruntime/automation/modules.h"
#include "values.h"

namespace tsruntime::python {
namespace {

// --- Event handler failures ---------------------------------------------------------
//
// Handlers run inside the library's own code (a dictionary raises OnChanged in the middle
// of an assignment), where a Python exception cannot travel. The first failure is kept
// and raised when the call from Python that led to it returns; a failure with no such
// call in progress is reported as unraisable.

struct HandlerFailure {
  std::optional<py::error_already_set> error;
};
thread_local HandlerFailure* innermost_call = nullptr;

class CallScope {
 public:
  CallScope() : outer_(innermost_call) { innermost_call = &failure_; }
  ~CallScope() { innermost_call = outer_; }
  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;

  void RaisePendingFailure() {
    if (!failure_.error) return;
    py::error_already_set error = std::move(*failure_.error);
    failure_.error.reset();
    throw error;
  }

 private:
  HandlerFailure failure_;
  HandlerFailure* outer_;
};

}  // namespace

void HandlerFailed(py::error_already_set error) {
  if (innermost_call && !innermost_call->error) {
    innermost_call->error = std::move(error);
    return;
  }
  error.discard_as_unraisable("a tsruntime event handler");
}

namespace {

// Runs `body` (an Invoke) so that a handler failure during it surfaces afterwards; the
// handler's exception wins over an error the library raised later in the same call.
template <class F>
auto InvokeFromPython(F&& body) -> decltype(body()) {
  CallScope scope;
  decltype(body()) result;
  try {
    result = body();
  } catch (const Error&) {
    scope.RaisePendingFailure();
    throw;
  }
  scope.RaisePendingFailure();
  return result;
}

// The Python callable behind a connection, shared by the copies the library makes of the
// sink; the last copy may go while the library runs, so it takes the GIL to let go.
struct PythonCallback {
  py::object callable;
};
using SharedCallback = std::shared_ptr<PythonCallback>;

SharedCallback ShareCallback(py::object callable) {
  return SharedCallback(new PythonCallback{std::move(callable)}, [](PythonCallback* c) {
    py::gil_scoped_acquire gil;
    delete c;
  });
}

void Deliver(const PythonCallback& callback, StringView event, std::vector<Variant>& args) {
  py::gil_scoped_acquire gil;
  try {
    py::list values;
    for (const Variant& a : args) values.append(ToPython(a));
    callback.callable(py::str(ToUtf8(event)), values);
  } catch (py::error_already_set& e) {
    HandlerFailed(std::move(e));
  } catch (const Error& e) {  // an argument Python cannot hold
    RaiseInPython(e);
    HandlerFailed(py::error_already_set());
  } catch (py::builtin_exception& e) {
    e.set_error();
    HandlerFailed(py::error_already_set());
  } catch (const std::exception& e) {
    PyErr_SetString(PyExc_RuntimeError, e.what());
    HandlerFailed(py::error_already_set());
  }
}

// An event connection; ends when closed or when Python lets go of it.
class Connection {
 public:
  Connection(Ref<Object> object, py::object callable) : object_(std::move(object)) {
    SharedCallback callback = ShareCallback(std::move(callable));
    cookie_ = object_->Connect([callback](StringView event, std::vector<Variant>& args) {
      Deliver(*callback, event, args);
    });
  }
  ~Connection() { Close(); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  void Close() {
    if (!object_) return;
    object_->Disconnect(cookie_);
    object_ = Ref<Object>();
  }
  bool connected() const { return static_cast<bool>(object_); }

 private:
  Ref<Object> object_;
  int cookie_ = 0;
};

// --- Invocation ---------------------------------------------------------------------

Object& Target(const ObjectHandle& handle) {
  if (!handle.object) RaiseRuntime(RuntimeError::kObjectNotSet);
  return *handle.object;
}

String MemberName(const Object& object, const py::object& member) {
  if (!member.is_none()) return py::cast<std::u16string>(member);
  const String& name = object.classInfo().defaultMember;
  if (name.empty()) RaiseRuntime(RuntimeError::kNotSupported);
  return name;
}

std::vector<Argument> Arguments(const py::tuple& positional, const py::dict& named) {
  std::vector<Argument> args;
  args.reserve(positional.size() + named.size());
  for (py::handle value : positional) args.push_back(Argument{{}, ToVariant(value)});
  for (auto [name, value] : named) {
    args.push_back(Argument{py::cast<std::u16string>(name), ToVariant(value)});
  }
  return args;
}

// A member call, or a property get. A member that writes arguments back returns its
// result followed by every written-back parameter in order (a member with no result
// returns the written values alone, one value unwrapped); a parameter left out comes back
// as its default's result, or None when it has no default.
py::object Call(const ObjectHandle& handle, const py::object& member, const py::tuple& positional,
                const py::dict& named) {
  Object& object = Target(handle);
  const String name = MemberName(object, member);
  std::vector<Argument> args = Arguments(positional, named);
  const Invocation done =
      InvokeFromPython([&] { return InvokeMember(object, name, InvokeKind::kCall, args); });
  const MemberInfo* m = done.member;

  py::list out;
  if (m->returnType != VarType::kEmpty) out.append(ToPython(done.result));
  bool writes = false;
  for (size_t k = 0; k < m->params.size(); ++k) {
    if (!m->params[k].writesBack) continue;
    writes = true;
    const Variant& v = done.params[k];
    out.append(v.isMissing() ? py::none() : ToPython(v));
  }
  if (!writes) return ToPython(done.result);
  if (m->returnType == VarType::kEmpty && out.size() == 1) return out[0];
  return py::tuple(out);
}

// A property let, or a set when the value is an object: the value comes last.
void Put(const ObjectHandle& handle, const py::object& member, const py::tuple& positional) {
  Object& object = Target(handle);
  const String name = MemberName(object, member);
  std::vector<Argument> args = Arguments(positional, py::dict());
  InvokeFromPython([&] { return Invoke(object, name, InvokeKind::kLet, args); });
}

// --- Type information ---------------------------------------------------------------

const char* KindName(MemberKind kind) {
  switch (kind) {
    case MemberKind::kMethod: return "method";
    case MemberKind::kPropertyGet: return "get";
    case MemberKind::kPropertyLet: return "let";
    case MemberKind::kPropertySet: return "set";
  }
  return "method";
}

py::object TypeNameOrNone(VarType type) {
  if (type == VarType::kEmpty) return py::none();
  return py::str(ToUtf8(TypeName(type)));
}

py::list Params(const std::vector<ParamInfo>& params) {
  py::list out;
  for (const ParamInfo& p : params) {
    py::dict d;
    d["name"] = ToUtf8(p.name);
    d["type"] = ToUtf8(TypeName(p.type));
    d["optional"] = p.optional;
    d["default"] = p.optional ? ToPython(p.defaultValue) : py::none();
    d["writes_back"] = p.writesBack;
    out.append(d);
  }
  return out;
}

py::object ClassDescription(const std::u16string& name) {
  const ClassInfo* c = FindClass(name);
  if (!c) return py::none();
  py::list members;
  for (const MemberInfo& m : c->members) {
    py::dict d;
    d["name"] = ToUtf8(m.name);
    d["kind"] = KindName(m.kind);
    d["params"] = Params(m.params);
    d["returns"] = TypeNameOrNone(m.returnType);
    d["returns_class"] = m.returnClass ? py::object(py::str(ToUtf8(m.returnClass().name)))
                                       : py::object(py::none());
    d["help"] = ToUtf8(m.help);
    size_t required = 0;
    for (const ParamInfo& p : m.params) required += p.optional ? 0 : 1;
    d["required"] = required;
    members.append(d);
  }
  py::list events;
  for (const EventInfo& e : c->events) {
    py::dict d;
    d["name"] = ToUtf8(e.name);
    d["params"] = Params(e.params);
    d["help"] = ToUtf8(e.help);
    events.append(d);
  }
  py::dict d;
  d["name"] = ToUtf8(c->name);
  d["progid"] = ToUtf8(c->progId());
  d["creatable"] = c->creatable && static_cast<bool>(c->factory);
  d["default"] = c->defaultMember.empty() ? py::object(py::none())
                                          : py::object(py::str(ToUtf8(c->defaultMember)));
  d["enumerable"] = c->enumerable();
  d["members"] = members;
  d["events"] = events;
  d["help"] = ToUtf8(c->help);
  return d;
}

}  // namespace
}  // namespace tsruntime::python

PYBIND11_MODULE(_tsruntime, m) {
  using namespace tsruntime;
  using namespace tsruntime::python;
  m.doc() = "The Tessaly Runtime Library's dispatch layer; use the tsruntime package.";
  m.attr("__version__") = TSRUNTIME_VERSION;

  py::register_exception_translator([](std::exception_ptr p) {
    if (!p) return;
    try {
      std::rethrow_exception(p);
    } catch (const Error& e) {
      RaiseInPython(e);
    }
  });

  BindValues(m);
  BindArrays(m);

  py::class_<ObjectHandle>(m, "Object", "A counted reference to a library object.")
      .def_property_readonly("class_name",
                             [](const ObjectHandle& h) { return ToUtf8(h.object->classInfo().name); })
      .def("__eq__",
           [](const ObjectHandle& a, const py::object& b) {
             return py::isinstance<ObjectHandle>(b) &&
                    a.object.get() == b.cast<const ObjectHandle&>().object.get();
           })
      .def("__hash__",
           [](const ObjectHandle& h) { return std::hash<const void*>()(h.object.get()); })
      .def("__repr__", [](const ObjectHandle& h) {
        return "<tsruntime object " + ToUtf8(h.object->classInfo().name) + ">";
      });

  py::class_<Connection>(m, "Connection", "An event connection; ends on close() or when freed.")
      .def("close", &Connection::Close)
      .def_property_readonly("connected", &Connection::connected);

  m.def(
      "install_hooks",
      [](py::object dispatch_class, py::object error_class) {
        GetHooks() = Hooks{std::move(dispatch_class), std::move(error_class)};
      },
      "Sets the class objects come back in and the exception class errors become.");
  m.def(
      "create",
      [](const std::u16string& prog_id) { return ObjectHandle{CreateObject(prog_id)}; },
      py::arg("progid"), "A new object of a registered class (error 429 if there is none).");
  m.def("call", &Call, py::arg("object"), py::arg("member"), py::arg("args"), py::arg("kwargs"),
        "Calls a method or reads a property; member None is the default member.");
  m.def("put", &Put, py::arg("object"), py::arg("member"), py::arg("args"),
        "Assigns a property (let, or set for an object); the value is the last argument.");
  m.def(
      "connect",
      [](const ObjectHandle& handle, py::object callback) {
        return std::make_unique<Connection>(handle.object, std::move(callback));
      },
      py::arg("object"), py::arg("callback"),
      "Calls callback(event_name, args) for every event the object raises.");
  m.def(
      "pump",
      [] { InvokeFromPython([] { PumpWaitingMessages(); return 0; }); },
      "Runs the events waiting on this thread's event loop (timer ticks, window messages).");
  m.def("class_info", &ClassDescription, py::arg("name"),
        "The type information of a class by ProgID or name, or None.");
  m.def(
      "class_names",
      [] {
        py::list out;
        for (const ClassInfo* c : RegisteredClasses()) {
          out.append(py::make_tuple(ToUtf8(c->name), ToUtf8(c->progId()),
                                    c->creatable && static_cast<bool>(c->factory)));
        }
        return out;
      },
      "(name, progid, creatable) of every registered class, sorted by name.");
  m.def(
      "enum_info",
      [] {
        py::list out;
        for (const EnumInfo* e : RegisteredEnums()) {
          py::list members;
          for (const EnumMember& em : e->members) {
            py::dict d;
            d["name"] = ToUtf8(em.name);
            d["value"] = em.value;
            d["help"] = ToUtf8(em.help);
            members.append(d);
          }
          py::dict d;
          d["name"] = ToUtf8(e->name);
          d["help"] = ToUtf8(e->help);
          d["members"] = members;
          out.append(d);
        }
        return out;
      },
      "The registered enumerations, sorted by name: name, help and members (name, value, "
      "help).");
  m.def(
      "_roundtrip", [](py::handle value) { return ToPython(ToVariant(value)); },
      "Converts a Python value to a Variant and back (for tests).");
  m.def(
      "_vartype", [](py::handle value) { return TypeCode(ToVariant(value).type()); },
      "The type code a Python value is passed as (for tests).");
}
