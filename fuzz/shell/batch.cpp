// A batch file of any bytes: every line is a call that was tried, or a complaint at its place.
#include "call/batch.hpp"
#include "call/session.hpp"
#include "input.hpp"
#include "output/output.hpp"
#include "text/json.hpp"

using namespace vorcfg;
using namespace fuzz;

namespace {

void require_text(const std::string& text)
{
    require(std::ranges::none_of(text, [](unsigned char c) { return (c < 0x20 && c != '\n') || c == 0x7f; }),
            "no control character is shown");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string text(reinterpret_cast<const char*>(data), size);
    std::ranges::replace(text, '@', 'a'); // no secret of this machine's files, and nobody is asked
    std::ranges::replace(text, '?', 'q');
    const auto lines = static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
    Batch batch(text, "f", {.literals = true, .standard_input = false});
    bool complained = false;
    std::size_t line = 0;
    std::size_t calls = 0;
    const auto moves_on = [&](const Place& place) {
        require(place.line > line && place.line <= lines && place.column > 0, "every line has its say, in order");
        line = place.line;
    };
    for (bool more = true; more;) {
        try {
            auto planned = batch.next();
            more = planned.has_value();
            if (more) {
                moves_on(planned->place);
                calls++;
                const CallResult report = Session({.capture = true}, std::nullopt).make(*planned);
                require_text(text_of(*planned, report));
                require(vor::Json::read(json_of(*planned, report)).has_value(), "a call is told in JSON");
            }
        } catch (const InputError& complaint) {
            complained = true;
            moves_on(complaint.place);
            require(!complaint.text.empty(), "a complaint says what is wrong");
            require_text(text_of(complaint));
            require(vor::Json::read(json_of(complaint)).has_value(), "a complaint is told in JSON");
        }
    }
    if (!complained) {
        batch.rewind();
        while (batch.next()) {
            calls--;
        }
        require(calls == 0, "what was tried is what is made");
    }
    return 0;
}
