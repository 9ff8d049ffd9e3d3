#include "registry_store.h"

#include <sqlite3.h>
#include <unicode/uchar.h>
#include <unicode/utf16.h>
#include <unistd.h>

#include <map>
#include <memory>
#include <optional>
#include <unordered_map>

#include "registry_location.h"
#include "tsruntime/clsZKRegistry.h"

namespace tsruntime::registry {
namespace {

constexpr int kBusyTimeoutMs = 30000;

constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS keys("
    "  id INTEGER PRIMARY KEY, parent INTEGER NOT NULL, folded TEXT NOT NULL,"
    "  name TEXT NOT NULL, UNIQUE(parent, folded));"
    "CREATE TABLE IF NOT EXISTS vals("
    "  id INTEGER PRIMARY KEY, key INTEGER NOT NULL, folded TEXT NOT NULL,"
    "  name TEXT NOT NULL, type INTEGER NOT NULL, data BLOB NOT NULL, UNIQUE(key, folded));";

// Names compare as the registry compares them: each character upper-cased on its own.
std::string Fold(StringView text) {
  String upper;
  upper.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    UChar32 c;
    U16_NEXT(text.data(), i, text.size(), c);
    c = u_toupper(c);
    if (U_IS_BMP(c)) {
      upper.push_back(static_cast<char16_t>(c));
    } else {
      upper.push_back(U16_LEAD(c));
      upper.push_back(U16_TRAIL(c));
    }
  }
  return ToUtf8(upper);
}

struct Path {
  Status status = kSuccess;
  std::vector<String> levels;
};

Path SplitPath(StringView path) {
  Path p;
  if (!path.empty() && path.back() == u'\\') path.remove_suffix(1);
  if (path.empty()) return p;
  size_t start = 0;
  for (;;) {
    const size_t end = std::min(path.find(u'\\', start), path.size());
    if (end == start) return Path{kBadPathname, {}};
    if (end - start > 255) return Path{kInvalidParameter, {}};
    p.levels.emplace_back(path.substr(start, end - start));
    if (end == path.size()) return p;
    start = end + 1;
  }
}

Status FromSqlite(int rc) {
  switch (rc & 0xff) {
    case SQLITE_OK:
    case SQLITE_DONE:
    case SQLITE_ROW:
      return kSuccess;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return kBusy;
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_CANTOPEN:
    case SQLITE_AUTH:
      return kAccessDenied;
    default:
      return kStoreFailed;
  }
}

// A failed SQLite call inside an operation; the operation's transaction rolls back.
struct StoreError {
  Status status;
};

void Check(int rc) {
  if (rc != SQLITE_OK && rc != SQLITE_DONE && rc != SQLITE_ROW) throw StoreError{FromSqlite(rc)};
}

// One statement in use: bound, stepped, and reset when it goes out of scope so that the
// cached statement is ready for the next call.
class Query {
 public:
  explicit Query(sqlite3_stmt* s) : s_(s) {}
  ~Query() {
    sqlite3_reset(s_);
    sqlite3_clear_bindings(s_);
  }
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  Query& Bind(int64_t v) {
    Check(sqlite3_bind_int64(s_, ++n_, v));
    return *this;
  }
  Query& Bind(const std::string& v) {
    Check(sqlite3_bind_text(s_, ++n_, v.data(), static_cast<int>(v.size()), SQLITE_TRANSIENT));
    return *this;
  }
  Query& Bind(std::span<const uint8_t> v) {
    // A zero-length blob, not NULL, for a value of no bytes.
    Check(sqlite3_bind_blob(s_, ++n_, v.empty() ? "" : static_cast<const void*>(v.data()),
                            static_cast<int>(v.size()), SQLITE_TRANSIENT));
    return *this;
  }
  // True while there is a row.
  bool Step() {
    const int rc = sqlite3_step(s_);
    Check(rc);
    return rc == SQLITE_ROW;
  }
  int64_t Int(int col) const { return sqlite3_column_int64(s_, col); }
  String Text(int col) const {
    const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(s_, col));
    return FromUtf8(p ? std::string_view(p, sqlite3_column_bytes(s_, col)) : "");
  }
  std::vector<uint8_t> Blob(int col) const {
    const auto* p = static_cast<const uint8_t*>(sqlite3_column_blob(s_, col));
    return p ? std::vector<uint8_t>(p, p + sqlite3_column_bytes(s_, col)) : std::vector<uint8_t>{};
  }

 private:
  sqlite3_stmt* s_;
  int n_ = 0;
};

// One open database, kept per thread and per file so that each operation costs a
// transaction rather than an open. A connection made before a fork is never used
// (nor closed) by the child.
class Connection {
 public:
  Connection(sqlite3* db, bool writable) : db_(db), writable_(writable), pid_(getpid()) {}
  ~Connection() {
    for (auto& [sql, s] : statements_) sqlite3_finalize(s);
    sqlite3_close_v2(db_);
  }
  bool writable() const { return writable_; }
  bool forked() const { return pid_ != getpid(); }

  Query Run(const char* sql) {
    sqlite3_stmt*& s = statements_[sql];
    if (!s) Check(sqlite3_prepare_v3(db_, sql, -1, SQLITE_PREPARE_PERSISTENT, &s, nullptr));
    return Query(s);
  }
  int64_t LastId() const { return sqlite3_last_insert_rowid(db_); }
  int Changes() const { return sqlite3_changes(db_); }

 private:
  sqlite3* db_;
  bool writable_;
  pid_t pid_;
  std::unordered_map<const char*, sqlite3_stmt*> statements_;
};

thread_local std::map<std::string, std::unique_ptr<Connection>> t_connections;

// The journal and the tables. The per-user store runs in WAL mode, where readers and
// writers do not wait for each other. The machine-wide store keeps a rollback journal:
// a WAL reader needs a -shm file beside the database, which other users cannot create in
// root's folder, while a rollback-journal reader needs only a read lock on the file
// itself. Its rare writes (installers) get full syncs. Changing the journal needs every
// other process out of the database, and SQLite reports a rival's lock at that moment at
// once instead of waiting for it: processes that open a new store together wait here.
int SetUp(sqlite3* db, bool machine_wide) {
  constexpr int kPauseMs = 5;
  const char* journal = machine_wide ? "PRAGMA journal_mode=DELETE; PRAGMA synchronous=FULL;"
                                     : "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;";
  for (int waited = 0;; waited += kPauseMs) {
    int rc = sqlite3_exec(db, journal, nullptr, nullptr, nullptr);
    if (rc == SQLITE_OK) rc = sqlite3_exec(db, kSchema, nullptr, nullptr, nullptr);
    if (FromSqlite(rc) != kBusy || waited >= kBusyTimeoutMs) return rc;
    sqlite3_sleep(kPauseMs);
  }
}

// Opens the database; nullptr with `status` set when it cannot be, or when a reader
// finds no machine-wide database yet (`status` stays kSuccess: the store is empty).
Connection* Connect(const DatabaseFile& file, Status* status) {
  auto it = t_connections.find(file.path);
  if (it != t_connections.end()) {
    if (!it->second->forked()) return it->second.get();
    (void)it->second.release();
    t_connections.erase(it);
  }
  const bool writable = MayWrite(file);
  if (writable && !PrepareFile(file)) {
    *status = kAccessDenied;
    return nullptr;
  }
  if (!writable && access(file.path.c_str(), F_OK) != 0) return nullptr;
  sqlite3* db = nullptr;
  const int flags = (writable ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY) | SQLITE_OPEN_NOMUTEX;
  int rc = sqlite3_open_v2(file.path.c_str(), &db, flags, nullptr);
  if (rc == SQLITE_OK) rc = sqlite3_busy_timeout(db, kBusyTimeoutMs);
  if (rc == SQLITE_OK && writable) rc = SetUp(db, file.machine_wide);
  if (rc != SQLITE_OK) {
    *status = FromSqlite(rc);
    sqlite3_close_v2(db);
    return nullptr;
  }
  auto& slot = t_connections[file.path];
  slot = std::make_unique<Connection>(db, writable);
  return slot.get();
}

// The key lookups every operation shares, inside one transaction.
class Tx {
 public:
  explicit Tx(Connection& c) : c_(c) {}

  // The root's row; 0 when it was never written (an empty root).
  int64_t Root(int32_t root, bool create) {
    const std::string name = ToUtf8(RootName(root));
    return Child(0, name, name, create);
  }
  // The key's row, or 0 when a level is missing (and not to be created).
  int64_t Find(int32_t root, const std::vector<String>& levels, bool create) {
    int64_t id = Root(root, create);
    for (const String& level : levels) {
      if (id == 0) return 0;
      id = Child(id, Fold(level), ToUtf8(level), create);
    }
    return id;
  }
  // The child's row and its name as stored, or 0.
  int64_t Lookup(int64_t parent, StringView level, String* stored) {
    auto q = c_.Run("SELECT id, name FROM keys WHERE parent=? AND folded=?");
    if (!q.Bind(parent).Bind(Fold(level)).Step()) return 0;
    *stored = q.Text(1);
    return q.Int(0);
  }
  bool HasChildren(int64_t id) {
    return c_.Run("SELECT 1 FROM keys WHERE parent=? LIMIT 1").Bind(id).Step();
  }
  bool Query(int64_t key, StringView name, uint32_t* type, std::vector<uint8_t>* data) {
    auto q = c_.Run("SELECT type, data FROM vals WHERE key=? AND folded=?");
    if (!q.Bind(key).Bind(Fold(name)).Step()) return false;
    *type = static_cast<uint32_t>(q.Int(0));
    *data = q.Blob(1);
    return true;
  }
  void Set(int64_t key, StringView name, uint32_t type, std::span<const uint8_t> data) {
    c_.Run(
          "INSERT INTO vals(key, folded, name, type, data) VALUES(?,?,?,?,?) "
          "ON CONFLICT(key, folded) DO UPDATE SET type=excluded.type, data=excluded.data")
        .Bind(key)
        .Bind(Fold(name))
        .Bind(ToUtf8(name))
        .Bind(int64_t{type})
        .Bind(data)
        .Step();
  }
  bool DeleteValue(int64_t key, StringView name) {
    c_.Run("DELETE FROM vals WHERE key=? AND folded=?").Bind(key).Bind(Fold(name)).Step();
    return c_.Changes() > 0;
  }
  // Deletes the key with every key below it and all their values.
  void DeleteTree(int64_t key) {
    c_.Run(
          "WITH RECURSIVE sub(id) AS (SELECT ? UNION ALL "
          "SELECT keys.id FROM keys JOIN sub ON keys.parent=sub.id) "
          "DELETE FROM vals WHERE key IN sub")
        .Bind(key)
        .Step();
    c_.Run(
          "WITH RECURSIVE sub(id) AS (SELECT ? UNION ALL "
          "SELECT keys.id FROM keys JOIN sub ON keys.parent=sub.id) "
          "DELETE FROM keys WHERE id IN sub")
        .Bind(key)
        .Step();
  }
  // One key of an import: a deletion of the key and everything below it, or the key
  // created with its values written and deleted in their order.
  void Apply(const Key& k, const std::vector<String>& levels) {
    if (k.deleted) {
      if (const int64_t id = Find(k.root, levels, false)) DeleteTree(id);
      return;
    }
    const int64_t id = Find(k.root, levels, true);
    for (const Value& v : k.values) {
      if (v.deleted) {
        DeleteValue(id, v.name);
      } else {
        Set(id, v.name, v.type, v.data);
      }
    }
  }
  std::vector<Value> Values(int64_t key) {
    std::vector<Value> values;
    auto q = c_.Run("SELECT name, type, data FROM vals WHERE key=? ORDER BY id");
    q.Bind(key);
    while (q.Step()) values.push_back({q.Text(0), static_cast<uint32_t>(q.Int(1)), q.Blob(2)});
    return values;
  }
  std::vector<std::pair<int64_t, String>> Children(int64_t key) {
    std::vector<std::pair<int64_t, String>> children;
    auto q = c_.Run("SELECT id, name FROM keys WHERE parent=? ORDER BY folded");
    q.Bind(key);
    while (q.Step()) children.emplace_back(q.Int(0), q.Text(1));
    return children;
  }

 private:
  int64_t Child(int64_t parent, const std::string& folded, const std::string& name, bool create) {
    {
      auto q = c_.Run("SELECT id FROM keys WHERE parent=? AND folded=?");
      if (q.Bind(parent).Bind(folded).Step()) return q.Int(0);
    }
    if (!create) return 0;
    c_.Run("INSERT INTO keys(parent, folded, name) VALUES(?,?,?)")
        .Bind(parent)
        .Bind(folded)
        .Bind(name)
        .Step();
    return c_.LastId();
  }

  Connection& c_;
};

void RollBack(Connection& c) {
  try {
    c.Run("ROLLBACK").Step();
  } catch (const StoreError&) {
    // SQLite has already rolled back after some failures.
  }
}

// Transactions on one or more databases that commit together: each is begun before any
// is written, and all are committed only once every write succeeded. What is not
// committed is rolled back when the batch ends.
class Batch {
 public:
  Batch() = default;
  Batch(const Batch&) = delete;
  Batch& operator=(const Batch&) = delete;
  ~Batch() {
    for (Connection* c : open_) RollBack(*c);
  }

  // Begins a transaction on the database. A write takes the write lock up front (BEGIN
  // IMMEDIATE), so that waiting for it goes through the busy timeout instead of failing
  // halfway. `*c` stays null, with kSuccess, for a reader of a database not made yet.
  Status Begin(const DatabaseFile& file, bool write, Connection** c) {
    Status status = kSuccess;
    *c = Connect(file, &status);
    if (!*c) return status;
    try {
      (*c)->Run(write ? "BEGIN IMMEDIATE" : "BEGIN").Step();
    } catch (const StoreError& e) {
      return e.status;
    }
    open_.push_back(*c);
    return kSuccess;
  }

  // Runs `body()` and commits every database when it returns kSuccess.
  template <class Body>
  Status Run(Body&& body) {
    try {
      const Status status = body();
      if (status != kSuccess) return status;
      for (; !open_.empty(); open_.erase(open_.begin())) open_.front()->Run("COMMIT").Step();
      return kSuccess;
    } catch (const StoreError& e) {
      return e.status;
    } catch (const std::bad_alloc&) {
      return kStoreFailed;
    }
  }

 private:
  std::vector<Connection*> open_;
};

// Runs `body(tx)` as one transaction on the database that holds `root`. A reader of a
// database that does not exist yet runs `empty()` instead.
template <class Body, class Empty>
Status Transact(int32_t root, bool write, Body&& body, Empty&& empty) {
  const std::optional<DatabaseFile> file = DatabaseFor(root);
  if (!file) return kInvalidHandle;
  if (write && !MayWrite(*file)) return kAccessDenied;
  Batch batch;
  Connection* c = nullptr;
  const Status status = batch.Begin(*file, write, &c);
  if (status != kSuccess) return status;
  if (!c) return empty();
  return batch.Run([&] {
    Tx tx(*c);
    return body(tx);
  });
}

// A key that exists only when its path is empty: the operation on an empty store.
Status EmptyStore(const Path& p) { return p.levels.empty() ? kSuccess : kFileNotFound; }

}  // namespace

String RootName(int32_t root) {
  switch (root) {
    case HKEY_CLASSES_ROOT:
      return u"HKEY_CLASSES_ROOT";
    case HKEY_CURRENT_USER:
      return u"HKEY_CURRENT_USER";
    case HKEY_LOCAL_MACHINE:
      return u"HKEY_LOCAL_MACHINE";
    case HKEY_USERS:
      return u"HKEY_USERS";
    case HKEY_CURRENT_CONFIG:
      return u"HKEY_CURRENT_CONFIG";
    default:
      return {};
  }
}

int32_t RootNamed(StringView name) {
  static constexpr std::pair<StringView, int32_t> kShort[] = {{u"HKCR", HKEY_CLASSES_ROOT},
                                                              {u"HKCU", HKEY_CURRENT_USER},
                                                              {u"HKLM", HKEY_LOCAL_MACHINE},
                                                              {u"HKU", HKEY_USERS},
                                                              {u"HKCC", HKEY_CURRENT_CONFIG}};
  for (const auto& [abbreviation, root] : kShort) {
    if (EqualsAsciiNoCase(name, abbreviation) || EqualsAsciiNoCase(name, RootName(root))) {
      return root;
    }
  }
  return 0;
}

Status OpenKey(int32_t root, StringView path) {
  const Path p = SplitPath(path);
  if (p.status != kSuccess) return p.status;
  return Transact(
      root, false,
      [&](Tx& tx) {
        return p.levels.empty() || tx.Find(root, p.levels, false) ? kSuccess : kFileNotFound;
      },
      [&] { return EmptyStore(p); });
}

Status CreateKey(int32_t root, StringView path) {
  const Path p = SplitPath(path);
  if (p.status != kSuccess) return p.status;
  return Transact(
      root, true, [&](Tx& tx) { return tx.Find(root, p.levels, true) ? kSuccess : kStoreFailed; },
      [] { return kAccessDenied; });
}

Status DeleteKey(int32_t root, StringView path) {
  const Path p = SplitPath(path);
  if (p.status != kSuccess) return p.status;
  if (p.levels.empty()) return DatabaseFor(root) ? kAccessDenied : kInvalidHandle;
  return Transact(
      root, true,
      [&](Tx& tx) {
        const int64_t id = tx.Find(root, p.levels, false);
        if (id == 0) return kFileNotFound;
        if (tx.HasChildren(id)) return kAccessDenied;
        tx.DeleteTree(id);
        return kSuccess;
      },
      [] { return kAccessDenied; });
}

Status DeleteValue(int32_t root, StringView path, StringView name) {
  const Path p = SplitPath(path);
  if (p.status != kSuccess) return p.status;
  return Transact(
      root, true,
      [&](Tx& tx) {
        const int64_t id = tx.Find(root, p.levels, false);
        return id != 0 && tx.DeleteValue(id, name) ? kSuccess : kFileNotFound;
      },
      [] { return kAccessDenied; });
}

Status SetValue(int32_t root, StringView path, StringView name, uint32_t type,
                std::span<const uint8_t> data, bool create_key) {
  const Path p = SplitPath(path);
  if (p.status != kSuccess) return p.status;
  return Transact(
      root, true,
      [&](Tx& tx) {
        const int64_t id = tx.Find(root, p.levels, create_key || p.levels.empty());
        if (id == 0) return kFileNotFound;
        tx.Set(id, name, type, data);
        return kSuccess;
      },
      [] { return kAccessDenied; });
}

Status QueryValue(int32_t root, StringView path, StringView name, uint32_t* type,
                  std::vector<uint8_t>* data) {
  const Path p = SplitPath(path);
  if (p.status != kSuccess) return p.status;
  return Transact(
      root, false,
      [&](Tx& tx) {
        const int64_t id = tx.Find(root, p.levels, false);
        return id != 0 && tx.Query(id, name, type, data) ? kSuccess : kFileNotFound;
      },
      [] { return kFileNotFound; });
}

Status ReadTree(int32_t root, StringView path, std::vector<Key>* keys) {
  const Path p = SplitPath(path);
  if (p.status != kSuccess) return p.status;
  String spelled;  // the path as stored, which may differ in case from `path`
  return Transact(
      root, false,
      [&](Tx& tx) {
        int64_t id = tx.Root(root, false);
        for (const String& level : p.levels) {
          if (id == 0) return kFileNotFound;
          String name;
          id = tx.Lookup(id, level, &name);
          spelled += (spelled.empty() ? u"" : u"\\") + name;
        }
        if (id == 0 && !p.levels.empty()) return kFileNotFound;
        // Depth first, each key before its children.
        std::vector<std::pair<int64_t, String>> pending{{id, spelled}};
        while (!pending.empty()) {
          auto [key, name] = std::move(pending.back());
          pending.pop_back();
          keys->push_back(Key{root, name, key ? tx.Values(key) : std::vector<Value>{}});
          if (key == 0) continue;
          auto children = tx.Children(key);
          for (auto c = children.rbegin(); c != children.rend(); ++c) {
            pending.emplace_back(c->first, name.empty() ? c->second : name + u"\\" + c->second);
          }
        }
        return kSuccess;
      },
      [&] {
        if (!p.levels.empty()) return kFileNotFound;
        keys->push_back(Key{root, {}, {}});
        return kSuccess;
      });
}

Status CheckPath(StringView path) { return SplitPath(path).status; }

Status WriteKeys(const std::vector<Key>& keys) {
  // Everything is checked before anything is written: every root, path and permission.
  // The databases are then locked in the order of their paths, so that two writers of
  // both cannot wait for each other.
  struct Group {
    DatabaseFile file;
    std::vector<std::pair<const Key*, std::vector<String>>> keys;
    Connection* c = nullptr;
  };
  std::map<std::string, Group> by_file;
  for (const Key& k : keys) {
    const std::optional<DatabaseFile> file = DatabaseFor(k.root);
    if (!file) return kInvalidHandle;
    if (!MayWrite(*file)) return kAccessDenied;
    Path p = SplitPath(k.path);
    if (p.status != kSuccess) return p.status;
    if (k.deleted && p.levels.empty()) return kAccessDenied;  // a root is never deleted
    Group& g = by_file.try_emplace(file->path, Group{*file, {}}).first->second;
    g.keys.emplace_back(&k, std::move(p.levels));
  }
  Batch batch;
  for (auto& [path, g] : by_file) {
    const Status status = batch.Begin(g.file, true, &g.c);
    if (status != kSuccess) return status;
  }
  return batch.Run([&] {
    for (auto& [path, g] : by_file) {
      Tx tx(*g.c);
      for (const auto& [k, levels] : g.keys) tx.Apply(*k, levels);
    }
    return kSuccess;
  });
}

}  // namespace tsruntime::registry
