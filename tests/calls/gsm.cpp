#include <device_mgmt/gsm.h>

#include "calls.hpp"

CALLS(gsm) = {
    CALL(vor_cfg_gsm_set_access_point_name(200, "internet"_t, 201),
         "sap 12 id 0xc00a | 1 i16 200 | 2 str 'internet' | 8 i16 201", answered),
    CALL(vor_cfg_gsm_set_username(200, "bob"_t, 201), "sap 12 id 0xc00a | 1 i16 200 | 4 str 'bob' | 8 i16 201",
         answered),
    CALL(vor_cfg_gsm_set_password(200, "secret"_t, 201), "sap 12 id 0xc00a | 1 i16 200 | 3 str 'secret' | 8 i16 201",
         answered),
    CALL(vor_cfg_gsm_activate(200), "sap 12 id 0xc002 | 1 i16 200", answered),
};
