#include "tsruntime/registry_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>

#include "registry_store.h"
#include "registry_text.h"
#include "utf16_bytes.h"

namespace tsruntime {
namespace {

using registry::Fail;
using registry::Key;

void WriteWhole(const std::string& file, const std::string& bytes) {
  const std::string temp = file + ".tmp";
  const int fd = open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  bool ok = fd >= 0;
  for (size_t done = 0; ok && done < bytes.size();) {
    const ssize_t n = write(fd, bytes.data() + done, bytes.size() - done);
    ok = n > 0;
    if (ok) done += static_cast<size_t>(n);
  }
  ok = ok && fsync(fd) == 0;
  if (fd >= 0) ok = close(fd) == 0 && ok;
  if (!ok || std::rename(temp.c_str(), file.c_str()) != 0) {
    unlink(temp.c_str());
    Fail(RuntimeError::kPathFileAccessError, FromUtf8(file));
  }
}

// "ROOT\path" to the root and the path below it.
std::pair<int32_t, String> SplitKey(StringView key) {
  const size_t slash = key.find(u'\\');
  const int32_t root = registry::RootNamed(key.substr(0, slash));
  if (root == 0) Fail(RuntimeError::kPathNotFound, String(key));
  return {root, slash == StringView::npos ? String() : String(key.substr(slash + 1))};
}

}  // namespace

void ExportRegistryKey(StringView key, const std::string& file) {
  const auto [root, path] = SplitKey(key);
  std::vector<Key> keys;
  const registry::Status status = registry::ReadTree(root, path, &keys);
  if (status == registry::kFileNotFound || status == registry::kBadPathname) {
    Fail(RuntimeError::kPathNotFound, String(key));
  }
  if (status != registry::kSuccess) {
    Fail(RuntimeError::kPathFileAccessError, String(key));
  }
  const std::vector<uint8_t> utf16 = Utf16LeBytes(registry::ExportText(keys));
  std::string bytes = "\xFF\xFE";
  bytes.append(utf16.begin(), utf16.end());
  WriteWhole(file, bytes);
}

void ImportRegistryFile(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) Fail(RuntimeError::kFileNotFound, FromUtf8(file));
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
  const registry::Status status = registry::WriteKeys(
      registry::ParseExportText(registry::DecodeExportFile(std::span(data, bytes.size()))));
  if (status == registry::kAccessDenied) Fail(RuntimeError::kPermissionDenied, FromUtf8(file));
  if (status != registry::kSuccess) Fail(RuntimeError::kPathFileAccessError, FromUtf8(file));
}

}  // namespace tsruntime
