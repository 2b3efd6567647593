// Lines that serve reads: each is a request that can be carried out, or an error that can be answered.
#include "call/session.hpp"
#include "input.hpp"
#include "input/secret.hpp"
#include "output/output.hpp"
#include "serve/request.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

using namespace vorcfg;
using namespace fuzz;

namespace {

void require_answerable(const input::InputError& error)
{
    require(!error.text.empty(), "an error says what is wrong");
    require(vor::Json::read(output::json_of(error)).has_value(), "an error can be answered");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string lines(data, data + size);
    for (const std::string_view line : vor::lines_in(lines)) {
        try {
            const vor::Json json = serve::object_in(line);
            require(vor::Json::read(serve::id_of(json)).has_value(), "an id is returned as it came");
            const serve::Request request = serve::request_in(json);
            require(!request.options.words.empty() && request.options.json, "a request names what to do");
            if (request.is_call) {
                input::Secrets secrets({.literals = true, .standard_input = false, .prompts = false});
                call::PreparedCall call = call::prepare(request.options.words, secrets);
                call::rehearse(call);
            }
        } catch (const input::InputError& error) {
            require_answerable(error);
        }
    }
    return 0;
}
