/* What a front end can do where no gateway answers: nothing is sent without an endpoint. */
#include <device_mgmt.h>

int main(void)
{
    char text[] = "00:1a:2b:3c:4d:5e";
    vor_uchar address[6] = {0};
    return vor_convert_mac_address_from_str_to_byte(text, address) == 0 && address[5] == 0x5e &&
                   vor_cfg_set_dhcp(0, 1) == VOR_CODE_REFUSED
               ? 0
               : 1;
}
