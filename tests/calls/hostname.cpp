#include <device_mgmt/hostname.h>

#include "calls.hpp"

CALLS(hostname) = {
    CALL(vor_cfg_set_plat_hostname("gw-17"_t), "sap 10 id 0xa00a one-way | 3 str 'gw-17'", sent_chain_unchecked),
};
