// Late binding: type information, the class registry and invocation by name.
//
// Every public class describes itself once, in a table that reads like the member list
// of a type library:
//
//   TSRUNTIME_DEFINE_CLASS(clsZKString) {
//     static const ClassInfo info =
//         ClassBuilder<clsZKString>("clsZKString")
//             .Help(u"Text operations: search, replace, filter, cut, trim and change case, ...")
//             .Method("InstrRight", &clsZKString::InstrRight,
//                     {"Expression", "SearchStr", Opt("SearchLen", -1),
//                      Opt("CompareType", 0)})
//             .Help(u"The position of the last SearchStr lying wholly in the first "
//                   u"SearchLen characters of Expression (all for -1), or 0; ...")
//             .Build();
//     return info;
//   }
//
// Parameter types, and whether an operation writes an argument back, come from the C++
// signature: a parameter taken by non-const reference (or by pointer, for an optional
// one) is written back to the caller.
//
// Each `.Help` line describes what was declared just before it, the class itself when
// nothing was yet: one line of English in the interface's names, as the object browser
// showed it. A property's help goes after its first accessor; the others share it.
//
// Hosts (the `tsrt` tool, the Python module, the C interface) only use the type
// information, `CreateObject` and `Invoke`; they hold no per-class code.
#pragma once

#include <functional>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tsruntime/automation/convert.h"
#include "tsruntime/automation/error.h"
#include "tsruntime/automation/variant.h"

namespace tsruntime {

enum class MemberKind { kMethod, kPropertyGet, kPropertyLet, kPropertySet };

struct ParamInfo {
  String name;
  VarType type = VarType::kVariant;  // declared type; arrays as ArrayOf(element)
  bool optional = false;
  Variant defaultValue;  // Missing for an optional parameter without a default
  bool writesBack = false;
};

struct MemberInfo {
  String name;
  MemberKind kind = MemberKind::kMethod;
  std::vector<ParamInfo> params;  // for a let or set, the assigned value comes last
  VarType returnType = VarType::kEmpty;  // kEmpty: returns nothing
  // For a member returning an object of a known class: that class's information
  // (looked up when asked, since classes may return each other).
  const ClassInfo& (*returnClass)() = nullptr;
  // Calls the member with arguments bound in parameter order, defaults filled in.
  // Written-back arguments are left in `args`.
  std::function<Variant(Object& self, std::vector<Variant>& args)> call;
  // One line of English: what the member does, naming its parameters as declared. The
  // accessors of one property share theirs.
  String help;
};

struct EventInfo {
  String name;
  std::vector<ParamInfo> params;
  String help;  // when it is raised, and what its arguments carry
};

struct ClassInfo {
  String name;
  bool creatable = true;
  std::function<Ref<Object>()> factory;
  std::vector<MemberInfo> members;
  String defaultMember;  // empty when the class has none
  std::vector<EventInfo> events;
  String help;  // one line: what the class is for

  String progId() const { return u"TSRuntimeLib." + name; }
  // Whether the class enumerates through a `NewEnum` member.
  bool enumerable() const;
  // The member of that name (any case) and kind, or null.
  const MemberInfo* find(StringView member, MemberKind kind) const;
};

struct EnumMember {
  String name;
  int32_t value = 0;
  String help;  // one line: what the value means where it is used
};

// An enumeration's table, help strings beside what they describe:
//   {u"xeZK_TRIM_TYPE",
//    {{u"xcZK_TRIM_LEFT", xcZK_TRIM_LEFT, u"Trim removes the characters at the start."}, ...},
//    u"Which end of the text Trim works on."}
struct EnumInfo {
  String name;
  std::vector<EnumMember> members;
  String help;
};

// --- The class registry -------------------------------------------------------------

// Registers a class or an enumeration; returns true so that it can initialise a static.
bool RegisterClass(const ClassInfo& info);
bool RegisterEnum(const EnumInfo& info);

// Finds a class by ProgID ("TSRuntimeLib.clsZKString") or bare name, in any case.
const ClassInfo* FindClass(StringView prog_id_or_name);
// Registered classes and enumerations, sorted by name.
std::vector<const ClassInfo*> RegisteredClasses();
std::vector<const EnumInfo*> RegisteredEnums();

// Creates a new object; raises "ActiveX component can't create object" (429) for a
// name that is not registered or a class that hosts cannot create.
Ref<Object> CreateObject(StringView prog_id_or_name);

// --- Invocation ---------------------------------------------------------------------

enum class InvokeKind {
  kCall,  // a method, or a property get
  kLet,   // property let (a property set when the class has only that)
  kSet,   // property set (a property let when the class has only that)
};

// One argument as a host passes it: positional when `name` is empty.
struct Argument {
  String name;
  Variant value;
};

// Invokes `member` on `object`. Positional arguments fill parameters in order; named
// ones go to the parameter of that name (any case). A missing optional argument takes
// its default; a Missing value counts as left out. For a let or set the assigned value
// is the last positional argument and goes to the last parameter, the others fill the
// index parameters before it.
//
// Arguments the member writes back are stored into `args` (not those left out, and
// nothing when the call fails). Errors: not supported (438) for an unknown member,
// named argument not found (448) for an unknown name or a parameter given twice,
// argument not optional (449), wrong number of arguments (450), and the conversion
// errors of convert.h (13, 6, 94) for an argument that cannot take its declared type.
Variant Invoke(Object& object, StringView member, InvokeKind kind,
               std::vector<Argument>& args);

// The member that `Invoke` reaches for these arguments, or null: a call reaches a method
// or else a property get; a let reaches the let (the set when an object is assigned and
// the class has one), a set the set, each falling back to the other.
const MemberInfo* ResolveMember(const ClassInfo& info, StringView member, InvokeKind kind,
                                const std::vector<Argument>& args);

// What one late-bound call did, for hosts that show more than the result.
struct Invocation {
  const MemberInfo* member = nullptr;  // the member reached
  Variant result;
  // Each parameter's final value, in parameter order: what the caller passed or the
  // default, after the member wrote back into it.
  std::vector<Variant> params;
  // The index in `args` of the argument that filled each parameter; -1 where the caller
  // left it out.
  std::vector<int> origin;
};

// `Invoke`, reporting the member reached and every parameter's final value.
Invocation InvokeMember(Object& object, StringView member, InvokeKind kind,
                        std::vector<Argument>& args);

// The same, for a member's default: the class's default member, called with `args`.
Variant InvokeDefault(Object& object, std::vector<Argument>& args);

// --- Describing a class -------------------------------------------------------------

// A parameter name with its optional default, as `ClassBuilder` takes them.
struct Param {
  Param(const char* name) : name(name) {}
  const char* name;
  bool optional = false;
  Variant defaultValue;
  VarType declared = VarType::kEmpty;  // kEmpty: from the C++ type
};

// An optional parameter with a default value, or with none (the member then receives
// Missing, which only a Variant or pointer parameter can take).
inline Param Opt(const char* name, Variant default_value = Variant::Missing()) {
  Param p(name);
  p.optional = true;
  p.defaultValue = std::move(default_value);
  return p;
}
// A parameter whose declared type differs from what the C++ type says (an array's
// element type, say).
inline Param Typed(Param p, VarType declared) {
  p.declared = declared;
  return p;
}

namespace dispatch_detail {

template <class T>
struct Arg;  // how a C++ parameter type takes a bound argument

template <class T>
concept Enum = std::is_enum_v<T>;

// A by-value scalar: converted from the argument.
template <class T, VarType kT, T (*kConvert)(const Variant&)>
struct ScalarArg {
  static constexpr VarType kType = kT;
  static constexpr bool kWritesBack = false;
  static T Take(Variant& slot) { return kConvert(slot); }
};
// A scalar by reference: the slot is converted in place and the callee writes it.
template <class T, VarType kT, T (*kConvert)(const Variant&)>
struct ScalarRefArg {
  static constexpr VarType kType = kT;
  static constexpr bool kWritesBack = true;
  static T& Take(Variant& slot) {
    slot = Variant(kConvert(slot));
    return slot.template value<T>();
  }
};
// An optional scalar written back: null when the caller left it out.
template <class T, VarType kT, T (*kConvert)(const Variant&)>
struct ScalarPtrArg {
  static constexpr VarType kType = kT;
  static constexpr bool kWritesBack = true;
  static T* Take(Variant& slot) {
    if (slot.isMissing()) return nullptr;
    return &ScalarRefArg<T, kT, kConvert>::Take(slot);
  }
};

#define TSRUNTIME_SCALAR_ARG(T, kT, kConvert)                                \
  template <>                                                               \
  struct Arg<T> : ScalarArg<T, kT, kConvert> {};                            \
  template <>                                                               \
  struct Arg<const T&> : ScalarArg<T, kT, kConvert> {};                     \
  template <>                                                               \
  struct Arg<T&> : ScalarRefArg<T, kT, kConvert> {};                        \
  template <>                                                               \
  struct Arg<T*> : ScalarPtrArg<T, kT, kConvert> {};

TSRUNTIME_SCALAR_ARG(int16_t, VarType::kInteger, ToInteger)
TSRUNTIME_SCALAR_ARG(int32_t, VarType::kLong, ToLong)
TSRUNTIME_SCALAR_ARG(uint8_t, VarType::kByte, ToByte)
TSRUNTIME_SCALAR_ARG(float, VarType::kSingle, ToSingle)
TSRUNTIME_SCALAR_ARG(double, VarType::kDouble, ToDouble)
TSRUNTIME_SCALAR_ARG(Currency, VarType::kCurrency, ToCurrency)
TSRUNTIME_SCALAR_ARG(Date, VarType::kDate, ToDate)
TSRUNTIME_SCALAR_ARG(Decimal, VarType::kDecimal, ToDecimal)
TSRUNTIME_SCALAR_ARG(bool, VarType::kBoolean, ToBoolean)
TSRUNTIME_SCALAR_ARG(String, VarType::kString, ToString)
#undef TSRUNTIME_SCALAR_ARG

// Enumerations travel as Long.
template <Enum E>
struct Arg<E> {
  static constexpr VarType kType = VarType::kLong;
  static constexpr bool kWritesBack = false;
  static E Take(Variant& slot) { return static_cast<E>(ToLong(slot)); }
};

template <>
struct Arg<Variant> {
  static constexpr VarType kType = VarType::kVariant;
  static constexpr bool kWritesBack = false;
  static Variant Take(Variant& slot) { return slot; }
};
template <>
struct Arg<const Variant&> {
  static constexpr VarType kType = VarType::kVariant;
  static constexpr bool kWritesBack = false;
  static const Variant& Take(Variant& slot) { return slot; }
};
template <>
struct Arg<Variant&> {
  static constexpr VarType kType = VarType::kVariant;
  static constexpr bool kWritesBack = true;
  static Variant& Take(Variant& slot) { return slot; }
};

// Arrays: the argument must hold one (type mismatch otherwise); passed in place.
SafeArray& TakeArray(Variant& slot);
template <>
struct Arg<const SafeArray&> {
  static constexpr VarType kType = ArrayOf(VarType::kVariant);
  static constexpr bool kWritesBack = false;
  static const SafeArray& Take(Variant& slot) { return TakeArray(slot); }
};
template <>
struct Arg<SafeArray&> {
  static constexpr VarType kType = ArrayOf(VarType::kVariant);
  static constexpr bool kWritesBack = true;
  static SafeArray& Take(Variant& slot) { return TakeArray(slot); }
};

// Objects: Nothing or an object of class T (type mismatch otherwise).
Ref<Object> TakeObject(const Variant& slot);
template <class T>
struct Arg<Ref<T>> {
  static constexpr VarType kType = VarType::kObject;
  static constexpr bool kWritesBack = false;
  static Ref<T> Take(Variant& slot) {
    Ref<Object> o = TakeObject(slot);
    if (!o) return {};
    Ref<T> t = RefCast<T>(o);
    if (!t) RaiseRuntime(RuntimeError::kTypeMismatch);
    return t;
  }
};
template <class T>
struct Arg<const Ref<T>&> : Arg<Ref<T>> {};

template <class R>
struct Result {
  static constexpr VarType kType = Arg<R>::kType;
  static Variant Wrap(R&& r) { return Variant(std::forward<R>(r)); }
};
template <>
struct Result<void> {
  static constexpr VarType kType = VarType::kEmpty;
};
template <Enum E>
struct Result<E> {
  static constexpr VarType kType = VarType::kLong;
  static Variant Wrap(E e) { return Variant(static_cast<int32_t>(e)); }
};
template <class T>
concept Described = requires { T::TypeInfo(); };
template <Described T>
struct Result<Ref<T>> {
  static constexpr VarType kType = VarType::kObject;
  static constexpr auto kClass = &T::TypeInfo;
  static Variant Wrap(Ref<T>&& r) { return Variant(std::move(r)); }
};
template <>
struct Result<SafeArray> {
  static constexpr VarType kType = ArrayOf(VarType::kVariant);
  static Variant Wrap(SafeArray&& a) { return Variant(std::move(a)); }
};

template <class C, class R, class... A>
struct Signature {
  using Class = C;
  using Return = R;
  static constexpr size_t kArity = sizeof...(A);
  static std::vector<ParamInfo> Params() {
    return {ParamInfo{{}, Arg<A>::kType, false, {}, Arg<A>::kWritesBack}...};
  }
  template <class F, size_t... I>
  static Variant Call(F fn, C& self, std::vector<Variant>& args, std::index_sequence<I...>) {
    if constexpr (std::is_void_v<R>) {
      std::invoke(fn, self, Arg<A>::Take(args[I])...);
      return Variant();
    } else {
      return Result<R>::Wrap(std::invoke(fn, self, Arg<A>::Take(args[I])...));
    }
  }
};

template <class F>
struct Traits;
template <class C, class R, class... A>
struct Traits<R (C::*)(A...)> : Signature<C, R, A...> {};
template <class C, class R, class... A>
struct Traits<R (C::*)(A...) const> : Signature<C, R, A...> {};
template <class C, class R, class... A>
struct Traits<R (*)(C&, A...)> : Signature<C, R, A...> {};

// Member function pointers stay as they are; a captureless lambda becomes a pointer.
template <class F>
auto AsPointer(F fn) {
  if constexpr (std::is_class_v<F>) {
    return +fn;
  } else {
    return fn;
  }
}

// Checks a described member against its signature (names for every parameter).
void CheckParams(const ClassInfo& info, const MemberInfo& member, size_t given);

// Gives each property accessor without a help string the one its property declared.
void ShareAccessorHelp(ClassInfo& info);

}  // namespace dispatch_detail

template <class C>
class ClassBuilder {
 public:
  explicit ClassBuilder(std::string_view name) {
    info_.name = FromAscii(name);
    if constexpr (std::is_default_constructible_v<C>) {
      info_.factory = [] { return Ref<Object>(New<C>()); };
    } else {
      info_.creatable = false;
    }
  }

  template <class F>
  ClassBuilder& Method(std::string_view name, F fn, std::vector<Param> params = {}) {
    return Add(name, MemberKind::kMethod, fn, std::move(params));
  }
  template <class F>
  ClassBuilder& Get(std::string_view name, F fn, std::vector<Param> params = {}) {
    return Add(name, MemberKind::kPropertyGet, fn, std::move(params));
  }
  template <class F>
  ClassBuilder& Let(std::string_view name, F fn, std::vector<Param> params) {
    return Add(name, MemberKind::kPropertyLet, fn, std::move(params));
  }
  template <class F>
  ClassBuilder& Set(std::string_view name, F fn, std::vector<Param> params) {
    return Add(name, MemberKind::kPropertySet, fn, std::move(params));
  }
  // Declares what the member added last returns, where its C++ type says less: an
  // array's element type (`Returns(ArrayOf(VarType::kByte))` for a Byte() result).
  ClassBuilder& Returns(VarType type) {
    info_.members.back().returnType = type;
    return *this;
  }
  ClassBuilder& Default(std::string_view member) {
    info_.defaultMember = FromAscii(member);
    return *this;
  }
  ClassBuilder& Event(std::string_view name, std::vector<Param> params) {
    EventInfo e{FromAscii(name), {}, {}};
    for (const Param& p : params) {
      e.params.push_back(ParamInfo{FromAscii(p.name), p.declared == VarType::kEmpty
                                                          ? VarType::kVariant
                                                          : p.declared});
    }
    info_.events.push_back(std::move(e));
    described_ = Described::kEvent;
    return *this;
  }
  // The help string of what was declared last: the member or event before it, or the
  // class when it follows the constructor.
  ClassBuilder& Help(StringView text) {
    String& help = described_ == Described::kEvent    ? info_.events.back().help
                   : described_ == Described::kMember ? info_.members.back().help
                                                      : info_.help;
    help = String(text);
    return *this;
  }
  // For classes that hosts receive but do not create (enumerators, say).
  ClassBuilder& NotCreatable() {
    info_.creatable = false;
    return *this;
  }
  ClassInfo Build() {
    dispatch_detail::ShareAccessorHelp(info_);
    return std::move(info_);
  }

 private:
  template <class F>
  ClassBuilder& Add(std::string_view name, MemberKind kind, F fn, std::vector<Param> params) {
    auto callable = dispatch_detail::AsPointer(fn);
    using Sig = dispatch_detail::Traits<decltype(callable)>;
    static_assert(std::is_base_of_v<typename Sig::Class, C> ||
                  std::is_same_v<typename Sig::Class, C>);
    MemberInfo m;
    m.name = FromAscii(name);
    m.kind = kind;
    m.params = Sig::Params();
    using Result = dispatch_detail::Result<typename Sig::Return>;
    m.returnType = Result::kType;
    if constexpr (requires { Result::kClass; }) m.returnClass = Result::kClass;
    dispatch_detail::CheckParams(info_, m, params.size());
    for (size_t i = 0; i < params.size(); ++i) {
      ParamInfo& p = m.params[i];
      p.name = FromAscii(params[i].name);
      p.optional = params[i].optional;
      p.defaultValue = params[i].defaultValue;
      if (params[i].declared != VarType::kEmpty) p.type = params[i].declared;
    }
    m.call = [callable](Object& self, std::vector<Variant>& args) {
      return Sig::Call(callable, static_cast<C&>(self), args,
                       std::make_index_sequence<Sig::kArity>());
    };
    info_.members.push_back(std::move(m));
    described_ = Described::kMember;
    return *this;
  }

  ClassInfo info_;
  // What the next `.Help` describes: the last member, the last event, or the class.
  enum class Described { kClass, kMember, kEvent } described_ = Described::kClass;
};

// Defines `Cls::classInfo` and `Cls::TypeInfo` and registers the class at load time;
// follow it with the body of `TypeInfo`, which returns the class's description.
#define TSRUNTIME_DEFINE_CLASS(Cls)                                                   \
  const ::tsruntime::ClassInfo& Cls::classInfo() const { return Cls::TypeInfo(); }   \
  [[maybe_unused]] static const bool Cls##_registered =                              \
      ::tsruntime::RegisterClass(Cls::TypeInfo());                                    \
  const ::tsruntime::ClassInfo& Cls::TypeInfo()

// Declares the two in a class body.
#define TSRUNTIME_CLASS_INFO                                 \
  const ::tsruntime::ClassInfo& classInfo() const override; \
  static const ::tsruntime::ClassInfo& TypeInfo()

}  // namespace tsruntime
