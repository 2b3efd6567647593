// The text of a journal, to be kept elsewhere and to be put back.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

#include <fmt/core.h>

#include "input/state.hpp"
#include "output/output.hpp"
#include "site/commands.hpp"
#include "site/journal.hpp"
#include "text/file.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string& path, std::string_view why)
{
    throw input::InputError{fmt::format("{}: {}", path, why), input::exit_journal};
}

std::string text_of_journal(const Machine& machine, const std::string& path)
try {
    return machine.disk.open(path, Access::read)->content();
} catch (const vor::FileError& error) {
    refuse(path, error.error == ENOENT ? "no such journal" : error.what());
}

// Under another name, in a folder that there is, until all of it is on disk and known to be a journal.
class NewJournal {
public:
    NewJournal(const std::string& path, std::string_view text) : path_(path)
    {
        fs::path folder = path_.parent_path();
        while (!folder.empty() && !fs::exists(folder)) {
            folder = folder.parent_path();
        }
        name_ = (folder / path_.filename()).string() + ".XXXXXX";
        const int file = mkostemp(name_.data(), O_CLOEXEC); // for its owner only
        if (file < 0) {
            refuse(path_, vor::reason_of(errno));
        }
        const bool is_written = vor::write_all(file, text) && fdatasync(file) == 0;
        const int error = errno;
        close(file);
        if (!is_written) {
            unlink(name_.c_str());
            refuse(path_, vor::reason_of(error));
        }
    }
    NewJournal(const NewJournal&) = delete;
    NewJournal& operator=(const NewJournal&) = delete;
    ~NewJournal() { unlink(name_.c_str()); }

    void check(const Machine& machine, const std::optional<std::string>& gateway) const
    try {
        const auto note = [this](const std::string&) { refuse(path_, "its last line is incomplete"); };
        const Journal journal = Journal::read({machine.clock, machine.disk, note}, name_);
        if (gateway) {
            journal.check_gateway(*gateway);
        }
    } catch (input::InputError& error) {
        if (error.text.starts_with(name_)) {
            error.text.replace(0, name_.size(), path_.string());
        }
        throw;
    }
    // Only where there is none.
    void put(const Machine& machine) const
    {
        if (path_.has_parent_path()) {
            input::make_private(path_.parent_path());
        }
        if (link(name_.c_str(), path_.c_str()) != 0) {
            refuse(path_, vor::reason_of(errno));
        }
        machine.disk.open(path_, Access::read)->sync_name();
    }

private:
    const fs::path path_;
    std::string name_;
};

void put_back(const Machine& machine, const std::string& path, const std::string& text,
              const std::optional<std::string>& gateway)
{
    if (text.empty()) {
        refuse(path, "an empty text is not a journal");
    }
    if (access(path.c_str(), F_OK) == 0) {
        if (text_of_journal(machine, path) != text) {
            refuse(path, "there is another journal, which is not overwritten");
        }
        return;
    }
    const NewJournal journal(path, text);
    journal.check(machine, gateway);
    journal.put(machine);
}

} // namespace

int run_journal(const std::string& path, const std::optional<std::string>& text,
                const std::optional<std::string>& gateway, const input::Options& options)
{
    const Machine machine = this_machine(options.json);
    if (text) {
        put_back(machine, path, *text, gateway);
    }
    vor::Json json = output::record("journal");
    json["journal"] = path;
    json.add("gateway", Journal::read(machine, path).ledger().gateway());
    json["text"] = text_of_journal(machine, path);
    vor::print(stdout, output::line_of(json));
    return input::exit_ok;
}

} // namespace vorcfg::site
