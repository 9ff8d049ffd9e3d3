#include "registry_location.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "tsruntime/clsZKRegistry.h"

namespace tsruntime::registry {
namespace {

constexpr const char* kMachineDir = "/var/lib/tsruntime";

std::string Env(const char* name) {
  const char* v = std::getenv(name);
  return v ? v : "";
}

std::string HomeDir() {
  std::string home = Env("HOME");
  if (!home.empty()) return home;
  const passwd* pw = getpwuid(geteuid());
  return pw && pw->pw_dir ? pw->pw_dir : "/";
}

// XDG says a relative XDG_CONFIG_HOME is to be ignored.
std::string UserConfigDir() {
  const std::string xdg = Env("XDG_CONFIG_HOME");
  if (!xdg.empty() && xdg[0] == '/') return xdg;
  return HomeDir() + "/.config";
}

// Each missing level is made with `mode` whatever the umask: the per-user store's folders,
// its config folder included, are private (0700, as XDG asks); the machine-wide ones must
// stay readable to every user.
bool MakeDirs(const std::string& dir, mode_t mode) {
  if (dir.empty()) return true;
  struct stat st;
  if (stat(dir.c_str(), &st) == 0) return S_ISDIR(st.st_mode);
  const size_t slash = dir.find_last_of('/');
  if (slash != std::string::npos && slash > 0 && !MakeDirs(dir.substr(0, slash), mode)) {
    return false;
  }
  if (mkdir(dir.c_str(), mode) != 0) return errno == EEXIST;
  return chmod(dir.c_str(), mode) == 0;
}

}  // namespace

std::optional<DatabaseFile> DatabaseFor(int32_t root) {
  const bool machine = root == HKEY_LOCAL_MACHINE || root == HKEY_CLASSES_ROOT ||
                       root == HKEY_USERS || root == HKEY_CURRENT_CONFIG;
  if (!machine && root != HKEY_CURRENT_USER) return std::nullopt;
  const std::string moved = Env(kStoreDirVariable);
  if (!moved.empty()) return DatabaseFile{moved + (machine ? "/machine.db" : "/user.db"), machine};
  if (machine) return DatabaseFile{std::string(kMachineDir) + "/registry.db", true};
  return DatabaseFile{UserConfigDir() + "/tsruntime/registry.db", false};
}

bool MayWrite(const DatabaseFile& file) { return !file.machine_wide || geteuid() == 0; }

bool PrepareFile(const DatabaseFile& file) {
  const size_t slash = file.path.find_last_of('/');
  const std::string dir = slash == std::string::npos ? "" : file.path.substr(0, slash);
  if (!MakeDirs(dir, file.machine_wide ? 0755 : 0700)) return false;
  // SQLite would create the file under the umask; the mode is set here, once, and SQLite
  // gives its journal files the same. An existing file keeps the mode it has.
  const mode_t mode = file.machine_wide ? 0644 : 0600;
  const int fd = open(file.path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (fd < 0) return errno == EEXIST;
  const bool ok = fchmod(fd, mode) == 0;
  close(fd);
  return ok;
}

}  // namespace tsruntime::registry
