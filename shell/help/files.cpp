#include "help/files.hpp"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "text/text.hpp"

namespace vorcfg {

std::vector<std::string> paths_that_begin(std::string_view typed, bool home)
{
    namespace fs = std::filesystem;
    const std::size_t slash = typed.rfind('/');
    const std::string directory(typed.substr(0, slash == std::string_view::npos ? 0 : slash + 1));
    const std::string_view begin = typed.substr(directory.size());
    fs::path place = directory.empty() ? "." : directory;
    if (const char* const at_home = std::getenv("HOME"); home && directory.starts_with("~/") && at_home != nullptr) {
        place = fs::path(at_home) / directory.substr(2);
    }
    std::vector<std::string> paths;
    std::error_code ignored;
    for (fs::directory_iterator each(place, ignored), end; each != end; each.increment(ignored)) {
        const std::string name = each->path().filename().string();
        const bool shown = name.starts_with(begin) && (begin.starts_with('.') || !name.starts_with('.'));
        if (shown && vor::printable(name) == name && name.find('\n') == std::string::npos) {
            paths.push_back(directory + name + (each->is_directory(ignored) ? "/" : ""));
        }
    }
    std::ranges::sort(paths);
    return paths;
}

} // namespace vorcfg
