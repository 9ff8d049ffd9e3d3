#include "python_path.h"

#include <filesystem>
#include <system_error>
#include <vector>

namespace tsrt {
namespace fs = std::filesystem;

std::optional<std::string> PythonPackageFolder() {
  std::error_code ec;
  const fs::path self = fs::read_symlink("/proc/self/exe", ec);
  std::vector<fs::path> candidates;
#ifdef TSRT_PYTHON_DIR_FROM_BIN
  if (!ec) candidates.push_back(self.parent_path() / TSRT_PYTHON_DIR_FROM_BIN);
#endif
#ifdef TSRT_BUILD_PYTHON_DIR
  candidates.emplace_back(TSRT_BUILD_PYTHON_DIR);
#endif
  for (const fs::path& c : candidates) {
    if (fs::exists(c / "tsruntime" / "__init__.py", ec)) return fs::weakly_canonical(c, ec).string();
  }
  return std::nullopt;
}

}  // namespace tsrt
