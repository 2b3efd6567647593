#include <device_mgmt/snmp.h>

#include "calls.hpp"

CALLS(snmp) = {
    CALL(vor_cfg_set_snmp_v2_server_community_name("public"_t, 200, 201),
         "sap 21 id 0x15017 one-way | 1 str 'public' | 2 i16 200 | 4 i16 201", sent_chain_holding_two),
    CALL(vor_cfg_set_snmp_v2_trap_server("10.0.0.9"_t, "public"_t, 200),
         "sap 21 id 0x15017 one-way | 3 str '10.0.0.9' | 5 str 'public' | 4 i16 200", sent_chain_holding_two),
    CALL(vor_cfg_set_snmp_server_v3_credentials("x"_t, 1, 1), "sap 21 id 0x15001 | 33 str 'x' | 4 i16 1", lone_dropped),
    SENDS(vor_cfg_set_snmp_server_v3_credentials("x"_t, 1, 3), "sap 21 id 0x15001 | 35 str 'x' | 4 i16 3"),
    SENDS(vor_cfg_set_snmp_server_v3_credentials("x"_t, 0, 1), "sap 21 id 0x15001 | 36 str 'x' | 4 i16 1"),
    CALL(vor_cfg_set_snmp_server_v3_credentials("x"_t, 0, 3), "sap 21 id 0x15001 | 38 str 'x' | 4 i16 3", lone_dropped),
    CALL(vor_cfg_set_snmp_server_v3_credentials("x"_t, 2, 1), "sap 21 id 0x15001 | 4 i16 1", lone_dropped),
    SENDS(vor_cfg_set_snmp_server_v3_credentials("x"_t, 1, 0), "sap 21 id 0x15001 | 4 i16 0"),
    SENDS(vor_cfg_set_snmp_server_v3_credentials("x"_t, 0, 4), "sap 21 id 0x15001 | 4 i16 4"),
    CALL(vor_cfg_set_snmp_server_enable(200), "sap 21 id 0x15001 one-way | 39 i16 200", sent_chain_holding_two),
    CALL(vor_cfg_set_snmp_server_v3_user_access("bob"_t, 200), "sap 21 id 0x15001 | 40 str 'bob' | 2 i16 200",
         lone_dropped),
    CALL(vor_cfg_set_snmp_server_v3_engine_id("8000"_t), "sap 21 id 0x15001 | 41 str '8000'", lone_dropped),
};
