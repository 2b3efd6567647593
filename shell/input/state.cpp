#include "input/state.hpp"

#include <cstdlib>
#include <sys/stat.h>

namespace vorcfg::input {

std::filesystem::path state_directory()
{
    const auto of = [](const char* variable) {
        const char* const value = std::getenv(variable);
        return std::filesystem::path(value != nullptr ? value : "");
    };
    const std::filesystem::path state = of("XDG_STATE_HOME");
    const std::filesystem::path home = of("HOME");
    if (state.is_absolute()) {
        return state / "vorcfg";
    }
    return home.is_absolute() ? home / ".local/state/vorcfg" : "";
}

bool make_private(const std::filesystem::path& directory)
{
    std::error_code failed;
    std::filesystem::create_directories(directory.parent_path(), failed);
    return mkdir(directory.c_str(), S_IRWXU) == 0 || std::filesystem::is_directory(directory, failed);
}

} // namespace vorcfg::input
