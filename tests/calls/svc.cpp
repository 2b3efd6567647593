#include <device_mgmt/svc.h>

#include "calls.hpp"

CALLS(svc) = {
    CALL(vor_cfg_rest_set_bind_addr("rest"_t, "eth1"_t), "sap 3 id 0x3002 one-way | 1 str 'rest' | 6 str 'eth1'",
         sent_chain),
    CALL(vor_cfg_rest_set_app("rest"_t, "portal"_t), "sap 3 id 0x3002 one-way | 1 str 'rest' | 4 str 'portal'",
         sent_chain),
    CALL(vor_cfg_set_rest_config("rest"_t, "10.0.0.1"_t, -3, 200),
         "sap 3 id 0x3002 one-way | 1 str 'rest' | 2 str '10.0.0.1' | 3 i16 -3 | 5 i16 200", sent_chain),
    CALL(vor_cfg_set_protocol_svc("rest"_t, -3), "sap 10 id 0xa003 one-way | 1 str 'rest' | 2 i16 -3", sent_chain),
    CALL(vor_cfg_set_service_chain(200, "c"_t, 2, "a"_t, "b"_t),
         "sap 9 id 0x9004 option 0xc8 | 1 str 'c' | 2 str 'a' | 2 str 'b'", option_foreign_answer_kept),
    SENDS(vor_cfg_set_service_chain(0, "c"_t, 0), "sap 9 id 0x9004 option 0x00 | 1 str 'c'"),
    CALL(vor_cfg_tp_set_app("tcp"_t, "portal"_t, 20), "sap 20 id 0xfffe029 one-way | 1 str 'tcp' | 2 str 'portal'",
         sent_chain),
    SENDS(vor_cfg_tp_set_app("tcp"_t, nullptr, -2), "sap 65534 id 0xfffe029 one-way | 1 str 'tcp' | 2 str null"),
};
