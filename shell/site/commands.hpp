// commands.hpp: the commands over a file and its journal.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "call/batch.hpp"
#include "input/options.hpp"
#include "input/spreadsheet.hpp"

namespace vorcfg::site {

// The file with each row.
int check_rows(const std::string& path, const input::Spreadsheet& sheet, const input::Options& options);

struct SiteJournal {
    std::string path;
    std::string gateway; // as the site names it
};

// That of the file, which has been read. Throws an InputError where it is not known whose it is, or it is another's.
SiteJournal journal_of(const std::string& path, const call::Batch& batch, const input::Options& options);

int run_plan(const std::string& path, const input::Options& options);
int run_apply(const std::string& path, const input::Options& options);

// Over a journal.
int run_confirm(const std::string& path, const input::Options& options);
int run_revert(const std::string& path, const input::Options& options);

// Its text, in JSON; one that is given is put where there is none, if it is that of the gateway.
int run_journal(const std::string& path, const std::optional<std::string>& text,
                const std::optional<std::string>& gateway, const input::Options& options);

// As text, JSON or, with --html, a page: the sheet of one journal, or a line for each of several, and of folders.
int run_report(const std::vector<std::string>& paths, const input::Options& options);

// Over all journals, and folders of them, whose confirmed apply has expired: reverts it, as their owners.
int run_revert_expired(const std::vector<std::string>& paths, const input::Options& options);

} // namespace vorcfg::site
