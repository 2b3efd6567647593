#include "calls.hpp"

#include <sstream>
#include <sys/mman.h>
#include <unistd.h>

namespace {

struct Fault {
    const char* column[2];
    void (*script)(fake::Script&);
};

const Fault faults[] = {
    {{"no", "endpoint"}, [](fake::Script&) { vor_cfg_set_ipc_endpoint(nullptr); }},
    {{"no", "request"}, [](fake::Script& platform) { platform.failing_buffer = 1; }},
    {{"no", "response"}, [](fake::Script& platform) { platform.failing_buffer = 2; }},
    {{"null", "meta-data"}, [](fake::Script& platform) { platform.null_meta_data = true; }},
    {{"null", "payload"}, [](fake::Script& platform) { platform.null_payload = 1; }},
    {{"", "refused"}, [](fake::Script& platform) { platform.exchange_result = platform.send_result = -7; }},
    {{"id: low", "half"}, [](fake::Script& platform) { platform.answer_id_flips = 0x00000001; }},
    {{"high", "half"}, [](fake::Script& platform) { platform.answer_id_flips = 0x00010000; }},
    {{"empty", "answer"}, [](fake::Script& platform) { platform.null_payload = 2; }},
    {{"status", "7"},
     [](fake::Script& platform) {
         platform.answer = {7, 0, 0, 0};
     }},
    {{"status", "1"},
     [](fake::Script& platform) {
         platform.answer = {1, 0, 0, 0};
     }},
    {{"status", "0"}, [](fake::Script&) {}},
};

std::vector<std::string> cells_of(const char* text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::string line(const char* title, const std::vector<std::string>& cells)
{
    std::string text = title;
    for (const auto& cell : cells) {
        text += cell + std::string(cell.size() < 11 ? 11 - cell.size() : 1, ' ');
    }
    return text + "\n";
}

std::string column_heads()
{
    std::vector<std::string> heads[2];
    for (const Fault& fault : faults) {
        heads[0].emplace_back(fault.column[0]);
        heads[1].emplace_back(fault.column[1]);
    }
    return line("           ", heads[0]) + line("           ", heads[1]);
}

} // namespace

std::string shown(vor_int32 code)
{
    return std::to_string(code);
}

std::string shown(const void* record)
{
    return record == nullptr ? "null" : record == fake::data_of_buffer(2) ? "answer" : "stray";
}

void begin_call()
{
    fake::reset();
    vor_cfg_set_ipc_endpoint(fake::handle());
    vor_errno = 55;
}

std::string outcome(const std::string& returned)
{
    return returned + "/" + std::to_string(vor_errno) + "/" + fake::buffers();
}

void check_requests(std::span<const Call> calls)
{
    for (const Call& call : calls) {
        begin_call();
        const auto printed = printed_by([&] { call.make(); });
        std::string sent = fake::events();
        if (!printed.empty()) {
            sent += "; prints `" + fake::spelt(printed) + "`";
        }
        if (sent != call.sends) {
            ADD_FAILURE() << call.text << "\n  expected: " << call.sends << "\n  sent:     " << sent;
        }
    }
}

void check_outcomes(std::span<const Call> calls)
{
    for (const Call& call : calls) {
        if (call.strip == nullptr) {
            continue;
        }
        std::vector<std::string> cells;
        for (const Fault& fault : faults) {
            begin_call();
            fake::script.answer_id = call.answered_as;
            fault.script(fake::script);
            printed_by([&] { cells.push_back(outcome(call.make())); });
        }
        if (const auto expected = cells_of(call.strip->cells); cells != expected) {
            ADD_FAILURE() << call.text << ", outcomes as " << call.strip->name << "\n"
                          << column_heads() << line("  expected ", expected) << line("  actual   ", cells);
        }
    }
}

std::string printed_by(const std::function<void()>& action)
{
    std::fflush(stdout);
    const int file = memfd_create("printed", MFD_CLOEXEC);
    const int standard_output = dup(STDOUT_FILENO);
    if (file < 0 || standard_output < 0 || dup2(file, STDOUT_FILENO) < 0) {
        return "standard output cannot be caught";
    }
    action();
    std::fflush(stdout);
    dup2(standard_output, STDOUT_FILENO);
    close(standard_output);
    std::string text(static_cast<size_t>(lseek(file, 0, SEEK_END)), '\0');
    const auto got = pread(file, text.data(), text.size(), 0);
    close(file);
    text.resize(got < 0 ? 0 : static_cast<size_t>(got));
    return text;
}
