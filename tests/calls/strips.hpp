// strips.hpp: how calls go under every fault, one cell "return:steps" for each, whole from the endpoint to the return.
//
// The letters of the steps are explained in fake_vorinfra.hpp and calls.hpp. A dot is a cell like the last one, where
// nothing fails: the fault does not concern the call. R returned is the platform's own refusal.
#pragma once

#include <string_view>

struct Strip {
    std::string_view name, cells;
};

// clang-format off
inline constexpr Strip strips[] = {
    //no       no      no       null      null       refused       refused       answer's      answer's    empty          status          status          status
    //endpoint request response meta-data payload    exchange      send          low half      high half   answer         7               1               0

    // Answered: a chain, vor_errno cleared, the lone request kept, a null payload left to the serializer, all 32 bits of the id.
    {"answered",
     "-1:e     -4:eQ   -4:eQP   .         .          -3:eQP0cxqp   .             -4:eQP0cxqp   -4:eQP0cxqp -4:eQP0cxaqp   -1:eQP0cxaqEp   -1:eQP0cxaqEp   0:eQP0cxaqp"},
    {"answered_place_kept",
     "-1:e     -4:eQ   -4:eQP   .         -4:eQP0    -3:eQP0cxqp   .             -4:eQP0cxqp   -4:eQP0cxqp -4:eQP0cxaqp   -1:eQP0cxaqEp   -1:eQP0cxaqEp   0:eQP0cxaqp"},
    {"answered_low_half",
     "-1:e     -4:eQ   -4:eQP   .         .          -3:eQP0cxqp   .             -4:eQP0cxqp   .           -4:eQP0cxaqp   -1:eQP0cxaqEp   -1:eQP0cxaqEp   0:eQP0cxaqp"},
    {"answered_low_half_place_kept",
     "-1:e     -4:eQ   -4:eQP   .         -4:eQP0    -3:eQP0cxqp   .             -4:eQP0cxqp   .           -4:eQP0cxaqp   -1:eQP0cxaqEp   -1:eQP0cxaqEp   0:eQP0cxaqp"},
    {"answered_with_reading",
     "-1:e     -4:eQ   -4:eQP   .         .          -3:eQPxqp     .             -4:eQPxqp     .           -4:eQPxaqp     -1:eQPxaqEp     -1:eQPxaqEp     0:eQPxaqa4p"},

    // The same, the lone request given back.
    {"lone_dropped",
     "-1:e     -4:eQ   -4:eQPq  .         .          -3:eQP0cxqp   .             -4:eQP0cxqp   -4:eQP0cxqp -4:eQP0cxaqp   -1:eQP0cxaqEp   -1:eQP0cxaqEp   0:eQP0cxaqp"},
    {"lone_dropped_prints",
     "-1:e     -4:eQ   -4:eQPq  .         .          -3:eQP0cxqp   .             -4:eQP0cxqp   -4:eQP0cxqp -4:eQP0cxaqp   -1:eQP0cxaqEp   -1:eQP0cxaqEp   0:eQP0cxaqop"},
    {"lone_dropped_never_matches",
     "-1:e     -4:eQ   -4:eQPq  .         .          -3:eQP0cxqp   .             .             .           .              .               .               -4:eQP0cxqp"},
    {"lone_dropped_low_half",
     "-1:e     -4:eQ   -4:eQPq  .         .          -3:eQP0cxqp   .             -4:eQP0cxqp   .           -4:eQP0cxaqp   -1:eQP0cxaqEp   -1:eQP0cxaqEp   0:eQP0cxaqp"},
    {"lone_dropped_low_half_place_dropped",
     "-1:e     -4:eQ   -4:eQPq  .         -4:eQP0qp  -3:eQP0cxqp   .             -4:eQP0cxqp   .           -4:eQP0cxaqp   -1:eQP0cxaqEp   -1:eQP0cxaqEp   0:eQP0cxaqp"},
    {"lone_dropped_request_first",
     "-1:e     -4:eQ   -4:eQPq  .         -4:eQP0qp  -3:eQP0cxqp   .             -4:eQP0cxqp   .           -4:eQP0cxqa    -1:eQP0cxqaEp   -1:eQP0cxqaEp   0:eQP0cxqap"},
    {"lone_dropped_errno_left",
     "-1:      -4:Q    -4:QPq   .         -4:QP0qp   -3:QP0cxqp    .             -4:QP0cxqp    -4:QP0cxqp  -4:QP0cxaqp    -1:QP0cxaqEp    -1:QP0cxaqEp    0:QP0cxaqp"},

    // Answered, with an option byte: the lone request given back, the low half of the id, vor_errno left alone.
    {"option",
     "-1:      -4:Q    -4:QPq   -4:QPmqp  -4:QPm1qp  -3:QPm1cxqp   .             -4:QPm1cxqp   .           -4:QPm1cxa     -1:QPm1cxaqEp   -1:QPm1cxaqEp   0:QPm1cxaqp"},
    {"option_errno_cleared",
     "-1:e     -4:eQ   -4:eQPq  -4:eQPmqp -4:eQPm1qp -3:eQPm1cxqp  .             -4:eQPm1cxqp  .           -4:eQPm1cxa    -1:eQPm1cxaqEp  -1:eQPm1cxaqEp  0:eQPm1cxaqp"},
    {"option_then_notice",
     "-1:      -4:Q    -4:QPq   -4:QPmqp  -4:QPm1qp  -3:QPm1cxqp   -3:QPm1cxasqp -4:QPm1cxqp   .           -4:QPm1cxa     -1:QPm1cxaEqp   -1:QPm1cxaEqp   0:QPm1cxasqp"},
    {"option_request_last",
     "-1:      -4:Q    -4:QPq   -4:QPmqp  -4:QPm1qp  -3:QPm1cxqp   .             -4:QPm1cxqp   .           -4:QPm1cxa     -1:QPm1cxaEqp   -1:QPm1cxaEqp   0:QPm1cxaqp"},
    {"option_request_last_empty_dropped",
     "-1:      -4:Q    -4:QPq   -4:QPmqp  -4:QPm1qp  -3:QPm1cxqp   .             -4:QPm1cxqp   .           -4:QPm1cxaqp   -1:QPm1cxaEqp   -1:QPm1cxaEqp   0:QPm1cxaqp"},
    {"option_request_last_empty_dropped_prints",
     "-1:o     -4:oQ   -4:oQPq  -4:oQPmqp -4:oQPm1qp -3:oQPm1coxqp .             -4:oQPm1coxqp .           -4:oQPm1coxaqp -1:oQPm1coxaEqp -1:oQPm1coxaEqp 0:oQPm1coxaqp"},
    {"option_foreign_answer_kept",
     "-1:e     -4:eQ   -4:eQPq  -4:eQPmqp -4:eQPm1qp -3:eQPm1cxqp  .             -1:eQPm1cx    .           -4:eQPm1cxaqp  -1:eQPm1cxaqEp  -1:eQPm1cxaqEp  0:eQPm1cxaqp"},

    // Answered, a record.
    {"record",
     "-1:      -4:Q    -4:QPq   .         -4:QP0     -3:QP0xqp     .             -4:QP0xqp     .           -4:QP0xa       -1:QP0xaqEp     -1:QP0xaqEp     0:QP0xaqp"},
    {"record_errno_cleared",
     "-1:e     -4:eQ   -4:eQPq  .         -4:eQP0    -3:eQP0xqp    .             -4:eQP0xqp    .           -4:eQP0xa      -1:eQP0xaqEp    -1:eQP0xaqEp    0:eQP0xaqp"},
    {"record_unsent",
     "-1:e     -4:eQ   -4:eQPq  .         -4:eQP0    .             .             .             .           .              .               .               -4:eQP0qp"},
    {"record_text_read_first",
     "-1:e     -4:eQ   -4:eQP   .         -4:eQPr0   -3:eQPr0xq    .             -4:eQPr0xqp   .           -4:eQPr0xa     -1:eQPr0xaqEp   -1:eQPr0xaqEp   0:eQPr0xaqp"},

    // Answered, a flag byte: status 1 alone is success.
    {"flag_1001",
     "-1:      -4:Q    -4:QP    .         -4:QP0qp   -4:QP01cxqp   .             .             .           -4:QP01cxaqp   .               0:QP01cxaqp     -1001:QP01cxaqp"},
    {"flag_1002",
     "-1:      -4:Q    -4:QP    .         -4:QP0qp   -4:QP01cxqp   .             .             .           -4:QP01cxaqp   .               0:QP01cxaqp     -1002:QP01cxaqp"},

    // Fetched.
    {"fetched_by_record",
     "null:    null:Q  null:QP  .         null:QP0qp null:QP0xq    .             null:QP0xqp   .           null:QP0xa     .               .               answer:QP0xaqp"},
    {"fetched_by_empty",
     "-1:      -1:Q    -1:QP    .         .          -1:QPxq       .             0:QPxqp       .           .              .               .               0:QPxaqp"},

    // One-way.
    {"sent_chain",
     "-1:      -4:Q    .        .         -4:Q0      .             -3:Q0csq      .             .           .              .               .               0:Q0csq"},
    {"sent_chain_unchecked",
     "-1:      -4:Q    .        .         .          .             -3:Q0csq      .             .           .              .               .               0:Q0csq"},
    {"sent_chain_left",
     "-1:      -4:Q    .        .         -4:Q0q     .             -3:Q0csq      .             .           .              .               .               0:Q0cs"},
    {"sent_chain_minus_one",
     "-1:      -1:Q    .        .         -1:Q0      .             -1:Q0cs       .             .           .              .               .               0:Q0csq"},
    {"sent_chain_holding_two",
     "-1:e     -4:eQ   -4:eQPq  .         .          .             R:eQP0cs      .             .           .              .               .               0:eQP0cs"},
    {"sent_record",
     "-1:      -4:Q    .        .         -4:Q0      .             -3:Q0sq       .             .           .              .               .               0:Q0sq"},
    {"sent_record_errno_cleared",
     "-1:e     -4:eQ   .        .         -4:eQ0     .             -3:eQ0sq      .             .           .              .               .               0:eQ0sq"},
    {"sent_record_place_dropped",
     "-1:      -4:Q    .        .         -4:Q0q     .             -3:Q0sq       .             .           .              .               .               0:Q0sq"},
    {"sent_record_then_timer",
     "-1:      -4:Q    .        .         -4:Q0q     .             -3:Q0sq       .             .           .              .               .               0:Q0sqtlg"},
    {"sent_record_text_read_first",
     "-1:      -4:rQ   .        .         -4:rQ0q    .             .             .             .           .              .               .               0:rQ0sq"},

    // Calls that do nothing, and calls that stop at their arguments.
    {"nothing",
     ".        .       .        .         .          .             .             .             .           .              .               .               0:"},
    {"too_many_servers",
     ".        .       .        .         .          .             .             .             .           .              .               .               -1151:"},
};
// clang-format on

consteval std::string_view strip_named(std::string_view name)
{
    for (const Strip& strip : strips) {
        if (strip.name == name) {
            return name;
        }
    }
    throw "no such strip";
}
