#include "python_object.h"

#include <deque>
#include <unordered_map>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime::python {
namespace {

class PythonObject;

// inspect.Parameter kinds: positional-only 0, positional-or-keyword 1, *args 2.
constexpr int kVarPositional = 2;
constexpr int kVarPositionalRoom = 16;

// Live wrappers by their Python object; touched only under the GIL.
std::unordered_map<PyObject*, PythonObject*>& Wrappers() {
  static auto* wrappers = new std::unordered_map<PyObject*, PythonObject*>();
  return *wrappers;
}

class PythonObject final : public Object {
 public:
  explicit PythonObject(py::handle target)
      : target_(py::reinterpret_borrow<py::object>(target)) {
    Describe();
    Wrappers()[target.ptr()] = this;
  }

  ~PythonObject() override {
    if (!Py_IsInitialized()) {  // the interpreter has gone: nothing left to release
      target_.release();
      return;
    }
    py::gil_scoped_acquire gil;
    Wrappers().erase(target_.ptr());
    target_ = py::object();
  }

  // Attributes an instance gains after it was first passed are members too: the
  // description is made again when the instance's attribute count changes.
  const ClassInfo& classInfo() const override {
    py::gil_scoped_acquire gil;
    if (InstanceAttributes() != described_for_) const_cast<PythonObject*>(this)->Describe();
    return versions_.back();
  }
  PyObject* target() const { return target_.ptr(); }

 private:
  static py::object& TargetOf(Object& self) { return static_cast<PythonObject&>(self).target_; }

  // Runs Python code for the library: a Python exception is kept for the Python caller.
  template <class F>
  static Variant Guarded(F body) {
    py::gil_scoped_acquire gil;
    try {
      return body();
    } catch (py::error_already_set& e) {
      HandlerFailed(std::move(e));
    } catch (py::builtin_exception& e) {
      e.set_error();
      HandlerFailed(py::error_already_set());
    }
    return Variant();
  }

  Py_ssize_t InstanceAttributes() const {
    PyObject** dict = _PyObject_GetDictPtr(target_.ptr());
    return dict && *dict ? PyDict_Size(*dict) : 0;
  }

  // A new description; earlier ones stay, since a call in progress may be running one.
  void Describe() {
    ClassInfo& info = versions_.emplace_back();
    info.name = py::str(py::type::handle_of(target_).attr("__name__")).cast<std::u16string>();
    info.creatable = false;
    for (py::handle entry : py::list(py::module_::import("builtins").attr("dir")(target_))) {
      const std::string name = py::str(entry);
      if (name.empty() || name[0] == '_') continue;
      py::object attribute = py::getattr(target_, name.c_str(), py::none());
      if (PyCallable_Check(attribute.ptr())) {
        AddMethod(info, name, attribute);
      } else {
        AddProperty(info, name);
      }
    }
    described_for_ = InstanceAttributes();
  }

  static void AddMethod(ClassInfo& info, const std::string& name, const py::object& method) {
    MemberInfo m;
    m.name = FromUtf8(name);
    m.kind = MemberKind::kMethod;
    m.returnType = VarType::kVariant;
    try {
      py::object parameters =
          py::module_::import("inspect").attr("signature")(method).attr("parameters");
      for (py::handle p : parameters.attr("values")()) {
        const int kind = py::int_(p.attr("kind"));
        if (kind == kVarPositional) {  // *args: room for as many as a caller may pass
          for (int i = 1; i <= kVarPositionalRoom; ++i) {
            m.params.push_back(ParamInfo{FromAscii("arg" + std::to_string(i)), VarType::kVariant,
                                         true, Variant::Missing()});
          }
          break;
        }
        if (kind > kVarPositional) continue;  // keyword-only ones are never passed
        ParamInfo param;
        param.name = FromUtf8(py::str(p.attr("name")).cast<std::string>());
        param.optional = !p.attr("default").is(p.attr("empty"));
        param.defaultValue = Variant::Missing();
        m.params.push_back(std::move(param));
      }
    } catch (py::error_already_set&) {  // no signature to read: called without arguments
    }
    m.call = [name](Object& self, std::vector<Variant>& args) {
      return Guarded([&] {
        py::tuple values(args.size());
        size_t given = 0;
        for (const Variant& a : args) {
          if (a.isMissing()) break;  // left out: the Python default applies
          values[given++] = ToPython(a);
        }
        py::object result = TargetOf(self).attr(name.c_str())(
            *py::tuple(values[py::slice(0, static_cast<py::ssize_t>(given), 1)]));
        return ToVariant(result);
      });
    };
    info.members.push_back(std::move(m));
  }

  static void AddProperty(ClassInfo& info, const std::string& name) {
    MemberInfo get;
    get.name = FromUtf8(name);
    get.kind = MemberKind::kPropertyGet;
    get.returnType = VarType::kVariant;
    get.call = [name](Object& self, std::vector<Variant>&) {
      return Guarded([&] { return ToVariant(TargetOf(self).attr(name.c_str())); });
    };
    MemberInfo let = get;
    let.kind = MemberKind::kPropertyLet;
    let.returnType = VarType::kEmpty;
    let.params = {ParamInfo{u"RHS"}};
    let.call = [name](Object& self, std::vector<Variant>& args) {
      return Guarded([&] {
        py::setattr(TargetOf(self), name.c_str(), ToPython(args.at(0)));
        return Variant();
      });
    };
    info.members.push_back(std::move(get));
    info.members.push_back(std::move(let));
  }

  py::object target_;
  std::deque<ClassInfo> versions_;  // a deque: descriptions never move
  Py_ssize_t described_for_ = 0;
};

}  // namespace

Ref<Object> LateBoundPythonObject(py::handle target) {
  auto found = Wrappers().find(target.ptr());
  if (found != Wrappers().end()) return Ref<Object>(found->second);
  return Ref<Object>(new PythonObject(target));
}

PyObject* PythonTargetOf(const Object& object) {
  const auto* wrapper = dynamic_cast<const PythonObject*>(&object);
  return wrapper ? wrapper->target() : nullptr;
}

}  // namespace tsruntime::python
