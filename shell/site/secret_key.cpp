#include "site/secret_key.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include <fmt/core.h>

#include "input/state.hpp"
#include "site/sha256.hpp"
#include "text/file.hpp"

namespace vorcfg::site {

namespace {

constexpr std::size_t key_size = 32;

std::string digits_of(std::string_view bytes)
{
    std::string digits;
    for (const char byte : bytes) {
        digits += fmt::format("{:02x}", static_cast<unsigned char>(byte));
    }
    return digits;
}

struct Descriptor {
    explicit Descriptor(int opened) : number(opened) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { ::close(number); }

    const int number;
};

// Empty: there is none. Throws a vor::FileError where somebody else may know it.
std::string stored_key(const std::string& path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (file.number < 0 && (errno == ENOENT || path.empty())) {
        return "";
    }
    if (file.number < 0 || fstat(file.number, &status) != 0) {
        throw vor::FileError(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        throw vor::FileError("it is not a file");
    }
    if (status.st_uid != geteuid()) {
        throw vor::FileError(fmt::format("it belongs to user {}", status.st_uid));
    }
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        throw vor::FileError(fmt::format("it must have mode 600, not {:o}", status.st_mode & ALLPERMS));
    }
    std::array<char, key_size + 1> bytes{};
    if (read(file.number, bytes.data(), bytes.size()) != key_size) {
        throw vor::FileError(fmt::format("it must have {} bytes", key_size));
    }
    return {bytes.data(), key_size};
}

// Whole under its name, or not there; where another process is faster, its key stays.
void make_key(const std::string& path)
{
    std::array<char, key_size> bytes{};
    const std::string made = fmt::format("{}.{}", path, getpid());
    input::make_private(std::filesystem::path(path).parent_path());
    const Descriptor file(open(made.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (file.number < 0) {
        throw vor::FileError(errno);
    }
    const bool is_written = getrandom(bytes.data(), bytes.size(), 0) == key_size &&
                            vor::write_all(file.number, {bytes.data(), bytes.size()}) && fsync(file.number) == 0 &&
                            (link(made.c_str(), path.c_str()) == 0 || errno == EEXIST);
    const int error = errno;
    unlink(made.c_str());
    if (!is_written) {
        throw vor::FileError(error);
    }
}

// With the length before each part, so that no two lists are the same text.
void append_part(std::string& text, std::string_view part)
{
    text += fmt::format("{}:{}", part.size(), part);
}

// What a secret is of, and the secret: equal secrets of different settings have different fingerprints.
std::string marked_text(const call::PreparedCall& call, const call::CallKey& key)
{
    std::string text;
    append_part(text, call.row->full_name());
    for (const call::Setting& setting : call::settings_of(key)) {
        for (const call::KeptValues& object : setting.objects) {
            for (const call::KeptValue& value : object) {
                append_part(text, call::bytes_of(value));
            }
        }
    }
    const auto arguments = call.row->arguments();
    for (std::size_t i = 0; i < call.values.size(); i++) {
        if (call.values[i].secret) {
            append_part(text, arguments[std::min(i, arguments.size() - 1)].name);
            append_part(text, call.values[i].text);
        }
    }
    return text;
}

} // namespace

std::string secret_key_path()
{
    if (const char* const named = std::getenv("VORCFG_SECRET_KEY")) {
        return named;
    }
    const char* const state = std::getenv("XDG_STATE_HOME");
    const std::filesystem::path directory =
        geteuid() == 0 && (state == nullptr || *state == '\0') ? "/var/lib/vorcfg-key" : input::state_directory();
    return directory.empty() ? "" : (directory / "secret-key").string();
}

SecretKey::SecretKey(std::string path, std::function<void(const std::string&)> note)
    : path_(std::move(path)), note_(std::move(note))
{
}

void SecretKey::need(Missing missing)
{
    try {
        key_ = key_ ? key_ : stored_key(path_);
    } catch (const vor::FileError& error) {
        key_ = "";
        tried_ = true;
        throw input::InputError{
            .text = fmt::format("{}: the key for comparing secrets cannot be used: {}", path_, error.what()),
            .exit = input::exit_no_input,
            .hint = "VORCFG_SECRET_KEY names another file; where it is empty, no secret is compared"};
    }
    if (!key_->empty() || missing == Missing::left || path_.empty() || std::exchange(tried_, true)) {
        return;
    }
    try {
        make_key(path_);
        key_ = stored_key(path_);
    } catch (const vor::FileError& error) {
        note_(fmt::format("{} cannot be made, so that a changed secret will not be noticed: {}", path_, error.what()));
    }
}

call::CallKey SecretKey::key_of(const call::PreparedCall& call, Missing missing)
{
    call::CallKey key = call::key_of(call);
    if (!key.secret) {
        return key;
    }
    need(missing);
    if (!key_->empty() && std::ranges::none_of(call.values, &rows::Value::awaited)) {
        constexpr std::size_t shown = 4; // bytes that tell keys apart
        key.fingerprint = fmt::format("{}:{}", digits_of(hmac_sha256(*key_, "")).substr(0, 2 * shown),
                                      digits_of(hmac_sha256(*key_, marked_text(call, key))));
    }
    return key;
}

} // namespace vorcfg::site
