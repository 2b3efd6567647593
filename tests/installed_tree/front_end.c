#include <device_mgmt.h>

int main(void)
{
    vor_ip_address address = 0;
    /* without an endpoint nothing is sent: -1 */
    return ip_aton("192.168.1.10", &address) == 0 && address != 0 && vor_cfg_set_dhcp(0, 1) == -1 ? 0 : 1;
}
