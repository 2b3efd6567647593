// Messages as vorsim's managers receive them, one after the other: header, meta-data and payload.
#include <vorinfra_manager.h>

#include "gateway/gateway.hpp"
#include "input.hpp"
#include "record/json.hpp"
#include "record/line.hpp"
#include "record/stored.hpp"
#include "text/json.hpp"

using namespace vorsim;
using namespace fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    gateway::Gateway gateway({});
    while (!input.empty()) {
        const auto header = input.value<VOR_IPC_MSG_HDR>();
        const gateway::Bytes meta_data = input.take(std::min<std::size_t>(header.meta_data_sz, VORINFRA_DATA_MAX));
        const gateway::Bytes payload =
            input.take(std::min<std::size_t>(header.payload_sz, VORINFRA_DATA_MAX - meta_data.size()));
        const gateway::Decision decision = gateway.judge({.sap = header.ipc_dest_id,
                                                          .source = header.ipc_src_id,
                                                          .id = header.opcode,
                                                          .answer_wanted = header.flag != 0,
                                                          .meta_data = meta_data,
                                                          .payload = payload});
        require(decision.answered == (header.flag != 0), "an awaited answer is sent");
        require(!decision.answered || decision.answer.size() >= sizeof(vor_int32), "an answer has a status");
        require(decision.answer.size() <= VORINFRA_DATA_MAX, "an answer fits a message");
        require_printable(record::line_of(decision.record));
        require_printable(record::json_line(decision.record));
        require(decision.record.complained != decision.record.complaint.empty(), "a complaint has a reason");
    }
    const std::string state = vor::dump(record::json_of(gateway.state()));
    require(vor::dump(vor::Json::parse(state)) == state, "the state is JSON");
    for (const char character : gateway.state().text()) {
        require(character == '\n' || static_cast<unsigned char>(character) >= 0x20, "the state is text");
    }
    return 0;
}
