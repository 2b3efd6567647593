/* One call as a whole process: what vorcfg's start is measured against. */
#include <stdio.h>

#include <device_mgmt.h>

int main(void)
{
    char name[] = "tower-17";
    if (vor_cfg_create_ipc_endpoint(0x1000) != 0) {
        return 7;
    }
    const int code = (int)vor_cfg_set_plat_hostname(name);
    vor_cfg_remove_ipc_endpoint();
    printf("%d\n", code);
    return code != 0;
}
