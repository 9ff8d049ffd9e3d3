// Writes the Gambas classes of the gb.tsruntime component from the library's own type
// information, read through the C interface: one class per library class, declaring
// every member with its parameters and types, and one class of constants per
// enumeration.
//
//   tsrt-gambas-classes OUTDIR     writes OUTDIR/<Class>.class for each
//
// The declarations are what the Gambas IDE completes and what gbc3 compiles calls
// against; the calls themselves go through TsrtObject._Invoke, late bound, so the
// library stays the one place that knows what a member does.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tsruntime/tsruntime_c.h"

namespace {

std::string Utf8(const tsrt_text& t) {
  if (t.length == 0) return {};
  char* s = tsrt_utf16_to_utf8(t.chars, t.length, nullptr);
  std::string out = s ? s : "";
  tsrt_free(s);
  return out;
}

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "tsrt-gambas-classes: %s\n", what.c_str());
  std::exit(1);
}

// Braces let any name through, Gambas' reserved words included (Replace, Trim, Object).
std::string Id(const std::string& name) { return "{" + name + "}"; }

struct Param {
  std::string name;
  uint16_t type = TSRT_VT_VARIANT;
  bool optional = false;
  bool writes_back = false;
  std::string default_literal;  // empty: none that Gambas can declare
};

struct Member {
  std::string name;
  int32_t kind = TSRT_MEMBER_METHOD;
  uint16_t return_type = TSRT_VT_EMPTY;
  std::string return_class;
  std::vector<Param> params;
};

struct Event {
  std::string name;
  std::vector<Param> params;
};

struct ClassInfo {
  std::string name;
  std::string prog_id;
  bool creatable = false;
  bool enumerable = false;
  std::string default_member;
  std::vector<Member> members;
  std::vector<Event> events;
};

std::string GambasString(const std::string& s) {
  std::string out = "\"";
  for (char c : s) {
    if (c == '"' || c == '\\') out += '\\';
    if (c == '\n') { out += "\\n"; continue; }
    if (c == '\r') { out += "\\r"; continue; }
    out += c;
  }
  return out + "\"";
}

// The default as a Gambas literal, for the types whose Gambas parameter can carry one.
std::string DefaultLiteral(uint16_t declared, const tsrt_variant& v) {
  switch (v.type) {
    case TSRT_VT_INTEGER: return declared == TSRT_VT_INTEGER ? std::to_string(v.value.integer) : "";
    case TSRT_VT_LONG: return declared == TSRT_VT_LONG ? std::to_string(v.value.long_value) : "";
    case TSRT_VT_BYTE: return declared == TSRT_VT_BYTE ? std::to_string(v.value.byte) : "";
    case TSRT_VT_BOOLEAN: return declared == TSRT_VT_BOOLEAN ? (v.value.boolean ? "True" : "False") : "";
    case TSRT_VT_STRING:
      return declared == TSRT_VT_STRING
                 ? GambasString(Utf8(tsrt_text{v.value.string.chars, v.value.string.length}))
                 : "";
    default: return "";
  }
}

// The parameters of a member or an event; `read` is tsrt_class_member_param or
// tsrt_class_event_param.
using ParamReader = int (*)(const tsrt_class*, size_t, size_t, tsrt_param_info*);
std::vector<Param> ReadParams(const tsrt_class* cls, size_t index, size_t count,
                              ParamReader read, const std::string& where) {
  std::vector<Param> params;
  for (size_t i = 0; i < count; ++i) {
    tsrt_param_info info{};
    if (!read(cls, index, i, &info)) Fail(where + ": a parameter cannot be read");
    Param p;
    p.name = Utf8(info.name);
    p.type = info.type;
    p.optional = info.optional != 0;
    p.writes_back = info.writes_back != 0;
    if (p.optional) p.default_literal = DefaultLiteral(p.type, info.default_value);
    tsrt_variant_clear(&info.default_value);
    params.push_back(std::move(p));
  }
  return params;
}

ClassInfo ReadClass(const tsrt_class* cls) {
  tsrt_class_info info{};
  if (!tsrt_class_describe(cls, &info)) Fail("a class cannot be described");
  ClassInfo c;
  c.name = Utf8(info.name);
  c.prog_id = Utf8(info.prog_id);
  c.creatable = info.creatable != 0;
  c.enumerable = info.enumerable != 0;
  c.default_member = Utf8(info.default_member);
  for (size_t m = 0; m < info.member_count; ++m) {
    tsrt_member_info mi{};
    if (!tsrt_class_member(cls, m, &mi)) Fail(c.name + ": a member cannot be read");
    Member member{Utf8(mi.name), mi.kind, mi.return_type, {}, {}};
    if (mi.return_class) {
      tsrt_class_info rc{};
      if (tsrt_class_describe(mi.return_class, &rc)) member.return_class = Utf8(rc.name);
    }
    member.params =
        ReadParams(cls, m, mi.param_count, tsrt_class_member_param, c.name + "." + member.name);
    c.members.push_back(std::move(member));
  }
  for (size_t e = 0; e < info.event_count; ++e) {
    tsrt_event_info ei{};
    if (!tsrt_class_event(cls, e, &ei)) Fail(c.name + ": an event cannot be read");
    Event event{Utf8(ei.name), {}};
    event.params =
        ReadParams(cls, e, ei.param_count, tsrt_class_event_param, c.name + "." + event.name);
    c.events.push_back(std::move(event));
  }
  return c;
}

// --- Types ---------------------------------------------------------------------------

// What a parameter accepts. Currency, Decimal, arrays and Variant take any value the
// component converts (numbers and text for Currency, Gambas arrays and TsrtArray).
std::string ParamType(uint16_t type) {
  switch (type) {
    case TSRT_VT_INTEGER: return "Short";
    case TSRT_VT_LONG: return "Integer";
    case TSRT_VT_SINGLE: return "Single";
    case TSRT_VT_DOUBLE: return "Float";
    case TSRT_VT_DATE: return "Date";
    case TSRT_VT_STRING: return "String";
    case TSRT_VT_OBJECT: return "Object";
    case TSRT_VT_BOOLEAN: return "Boolean";
    case TSRT_VT_BYTE: return "Byte";
    default: return "Variant";
  }
}

std::string ReturnType(uint16_t type, const std::string& return_class) {
  if (type & TSRT_VT_ARRAY) return "TsrtArray";
  switch (type) {
    case TSRT_VT_CURRENCY: return "Currency";
    case TSRT_VT_DECIMAL: return "Decimal";
    case TSRT_VT_OBJECT: return return_class.empty() ? "Object" : return_class;
    default: return ParamType(type);
  }
}

// --- Writing -------------------------------------------------------------------------

// The argument as the call passes it: a left-out optional as Tsrt.Missing, a Null
// object as Nothing.
std::string ArgExpr(const Param& p) {
  std::string value = Id(p.name);
  if (p.type == TSRT_VT_OBJECT) value = "If(IsNull(" + value + "), Tsrt.Nothing, " + value + ")";
  if (p.optional) value = "If(IsMissing(" + Id(p.name) + "), Tsrt.Missing, " + value + ")";
  return "CVariant(" + value + ")";
}

std::string ParamDecl(const Param& p) {
  std::string d = p.optional ? "Optional " : "";
  if (p.writes_back) d += "ByRef ";
  d += Id(p.name) + " As " + ParamType(p.type);
  if (p.optional && !p.default_literal.empty()) d += " = " + p.default_literal;
  return d;
}

std::string ParamList(const std::vector<Param>& params) {
  std::string out;
  for (const Param& p : params) out += (out.empty() ? "" : ", ") + ParamDecl(p);
  return out;
}

std::string ArgArray(const std::vector<Param>& params) {
  if (params.empty()) return "";
  std::string out;
  for (const Param& p : params) out += (out.empty() ? "" : ", ") + ArgExpr(p);
  return "[" + out + "]";
}

struct Writer {
  std::string text;
  void Line(const std::string& s = "") { text += s + "\n"; }
};

// A call with its written-back arguments stored into the caller's variables.
void WriteCall(Writer& w, const std::string& member, int kind, const std::vector<Param>& params,
               bool returns) {
  bool any_back = false;
  for (const Param& p : params) any_back |= p.writes_back;
  const std::string call =
      "Me._Invoke(" + GambasString(member) + ", " + std::to_string(kind);
  if (!any_back) {
    const std::string args = ArgArray(params);
    w.Line(std::string("  ") + (returns ? "Return " : "") + call + (args.empty() ? "" : ", " + args) + ")");
    return;
  }
  w.Line("  Dim _args As Variant[] = " + ArgArray(params));
  w.Line(std::string("  ") + (returns ? "Dim _result As Variant = " : "") + call + ", _args)");
  for (size_t i = 0; i < params.size(); ++i) {
    const Param& p = params[i];
    if (!p.writes_back) continue;
    const std::string store = Id(p.name) + " = _args[" + std::to_string(i) + "]";
    w.Line(p.optional ? "  If Not IsMissing(" + Id(p.name) + ") Then " + store : "  " + store);
  }
  if (returns) w.Line("  Return _result");
}

void WriteMethod(Writer& w, const std::string& name, const Member& m, int kind,
                 const std::vector<Param>& params) {
  const bool returns = m.return_type != TSRT_VT_EMPTY;
  w.Line();
  if (returns) {
    w.Line("Public Function " + Id(name) + "(" + ParamList(params) + ") As " +
           ReturnType(m.return_type, m.return_class));
  } else {
    w.Line("Public Sub " + Id(name) + "(" + ParamList(params) + ")");
  }
  WriteCall(w, m.name, kind, params, returns);
  w.Line("End");
}

// Names TsrtObject itself uses: a library member of the same name could not be declared.
const std::set<std::string>& BaseNames() {
  static const std::set<std::string> names = {"callmember", "letmember", "_invoke", "_handle",
                                              "_nextitem",  "_wrap",     "_new",    "_free",
                                              "_property",  "_unknown",  "_get",    "_put",
                                              "_next"};
  return names;
}

struct PropertyGroup {
  const Member* get = nullptr;
  const Member* let = nullptr;
  const Member* set = nullptr;
};

std::string WriteClass(const ClassInfo& c) {
  Writer w;
  std::set<std::string> declared;
  auto declare = [&](const std::string& name) {
    const std::string key = Lower(name);
    if (BaseNames().count(key) || !declared.insert(key).second) {
      Fail(c.name + ": the member name " + name + " is taken");
    }
  };

  w.Line("' Gambas class file");
  w.Line();
  w.Line("' " + c.prog_id + (c.creatable ? "" : " (made by the library, not by New)") +
         ". Written by tsrt-gambas-classes from the library's type information.");
  w.Line();
  w.Line("Export");
  w.Line("Inherits TsrtObject");

  for (const Event& e : c.events) {
    w.Line();
    w.Line("Event " + Id(e.name) + "(" + ParamList(e.params) + ")");
  }

  // Members of one name that are property accessors form one property.
  std::vector<std::string> order;
  std::map<std::string, PropertyGroup> groups;
  for (const Member& m : c.members) {
    if (m.kind == TSRT_MEMBER_METHOD) {
      declare(m.name);
      WriteMethod(w, m.name, m, TSRT_INVOKE_CALL, m.params);
      continue;
    }
    const std::string key = Lower(m.name);
    if (!groups.count(key)) order.push_back(key);
    PropertyGroup& g = groups[key];
    (m.kind == TSRT_MEMBER_GET ? g.get : m.kind == TSRT_MEMBER_LET ? g.let : g.set) = &m;
  }

  for (const std::string& key : order) {
    const PropertyGroup& g = groups[key];
    const Member* writer = g.let ? g.let : g.set;
    const bool plain = (!g.get || g.get->params.empty()) && (!writer || writer->params.size() == 1);
    const std::string name = (g.get ? g.get : writer)->name;
    declare(name);
    if (plain) {
      // Property syntax: o.Name and o.Name = value (an object is assigned as Set).
      const std::string type = g.get ? ReturnType(g.get->return_type, g.get->return_class)
                                     : ParamType(writer->params[0].type);
      const std::string access = !writer ? "Property Read " : !g.get ? "Property Write " : "Property ";
      w.Line();
      w.Line(access + Id(name) + " As " + type);
      if (g.get) {
        w.Line();
        w.Line("Private Function " + name + "_Read() As " + type);
        w.Line("  Return Me._Invoke(" + GambasString(name) + ", " +
               std::to_string(TSRT_INVOKE_CALL) + ")");
        w.Line("End");
      }
      if (writer) {
        w.Line();
        w.Line("Private Sub " + name + "_Write(Value As " + type + ")");
        w.Line("  Me._Invoke(" + GambasString(name) + ", " + std::to_string(TSRT_INVOKE_LET) +
               ", [CVariant(Value)])");
        w.Line("End");
      }
      continue;
    }
    // An indexed property: Name(index) reads it, LetName(index, value) assigns it.
    if (g.get) WriteMethod(w, name, *g.get, TSRT_INVOKE_CALL, g.get->params);
    if (writer) {
      declare("Let" + name);
      Member let = *writer;
      let.return_type = TSRT_VT_EMPTY;
      WriteMethod(w, "Let" + name, let, TSRT_INVOKE_LET, let.params);
    }
  }

  // The default member as o[index] and o[index] = value.
  const std::string def = Lower(c.default_member);
  if (!def.empty() && groups.count(def)) {
    const PropertyGroup& g = groups[def];
    if (g.get && !g.get->params.empty()) {
      w.Line();
      w.Line("Public Function _get(" + ParamList(g.get->params) + ") As " +
             ReturnType(g.get->return_type, g.get->return_class));
      WriteCall(w, "", TSRT_INVOKE_CALL, g.get->params, true);
      w.Line("End");
    }
    const Member* writer = g.let ? g.let : g.set;
    if (writer && writer->params.size() > 1) {
      std::vector<Param> indexes(writer->params.begin(), writer->params.end() - 1);
      w.Line();
      w.Line("Public Sub _put(Value As Variant" + std::string(indexes.empty() ? "" : ", ") +
             ParamList(indexes) + ")");
      std::vector<Param> all = indexes;
      Param value;
      value.name = "Value";
      all.push_back(value);
      WriteCall(w, "", TSRT_INVOKE_LET, all, false);
      w.Line("End");
    }
  }

  if (c.enumerable) {
    w.Line();
    w.Line("Public Function _next() As Variant");
    w.Line("  Return Me._NextItem()");
    w.Line("End");
  }
  return w.text;
}

std::string WriteEnum(size_t index) {
  tsrt_text name{};
  size_t count = 0;
  if (!tsrt_enum_describe(index, &name, &count)) Fail("an enumeration cannot be read");
  Writer w;
  w.Line("' Gambas class file");
  w.Line();
  w.Line("' The library's enumeration " + Utf8(name) +
         ". Written by tsrt-gambas-classes from the library's type information.");
  w.Line();
  w.Line("Export");
  w.Line();
  for (size_t m = 0; m < count; ++m) {
    tsrt_text member{};
    int32_t value = 0;
    if (!tsrt_enum_member(index, m, &member, &value)) Fail(Utf8(name) + ": a member");
    w.Line("Public Const " + Id(Utf8(member)) + " As Integer = " + std::to_string(value));
  }
  return w.text;
}

void Save(const std::string& dir, const std::string& name, const std::string& text) {
  std::ofstream out(dir + "/" + name + ".class", std::ios::binary);
  out << text;
  if (!out) Fail("cannot write " + dir + "/" + name + ".class");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) Fail("usage: tsrt-gambas-classes OUTDIR");
  const std::string dir = argv[1];
  std::vector<ClassInfo> classes;
  std::set<std::string> names;
  for (size_t i = 0; i < tsrt_class_count(); ++i) {
    // Looking a class up by name loads the module that holds its code, if another module
    // does: until then only its name is listed.
    tsrt_class_info listed{};
    if (!tsrt_class_describe(tsrt_class_at(i), &listed)) Fail("a listed class cannot be described");
    classes.push_back(ReadClass(tsrt_class_find(listed.name.chars, listed.name.length)));
    names.insert(Lower(classes.back().name));
  }
  for (const ClassInfo& c : classes) Save(dir, c.name, WriteClass(c));
  for (size_t i = 0; i < tsrt_enum_count(); ++i) {
    tsrt_text name{};
    tsrt_enum_describe(i, &name, nullptr);
    if (names.count(Lower(Utf8(name)))) Fail("the enumeration " + Utf8(name) + " has a class's name");
    Save(dir, Utf8(name), WriteEnum(i));
  }
  return 0;
}
