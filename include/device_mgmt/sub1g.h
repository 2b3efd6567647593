/*
 * sub1g.h: the sub-1 GHz radio, held by its manager (sub1gmgr, SAP 8).
 *
 * The three setters set vor_errno to 0 first.
 */
#ifndef DEVICE_MGMT_SUB1G_H
#define DEVICE_MGMT_SUB1G_H

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

typedef struct _vor_sub1gmgr_set_status_ {
    vor_int32 set_status;
} VOR_SUB1GMGR_SET_STATUS;
VOR_LAYOUT(sizeof(VOR_SUB1GMGR_SET_STATUS) == 4);

/* One byte per transceiver register, in the order of their addresses. */
typedef struct _sub1g_config_reg {
    vor_uchar iocfg2;
    vor_uchar iocfg1;
    vor_uchar iocfg0;
    vor_uchar fifothr;
    vor_uchar sync1;
    vor_uchar sync0;
    vor_uchar pktlen;
    vor_uchar pktctrl1;
    vor_uchar pktctrl0;
    vor_uchar addr;
    vor_uchar channr;
    vor_uchar fsctrl1;
    vor_uchar fsctrl0;
    vor_uchar freq2;
    vor_uchar freq1;
    vor_uchar freq0;
    vor_uchar mdmcfg4;
    vor_uchar mdmcfg3;
    vor_uchar mdmcfg2;
    vor_uchar mdmcfg1;
    vor_uchar mdmcfg0;
    vor_uchar deviatn;
    vor_uchar mcsm2;
    vor_uchar mcsm1;
    vor_uchar mcsm0;
    vor_uchar foccfg;
    vor_uchar bscfg;
    vor_uchar agcctrl2;
    vor_uchar agcctrl1;
    vor_uchar agcctrl0;
    vor_uchar rsrvd_0x20;
    vor_uchar frend1;
    vor_uchar frend0;
    vor_uchar fscal3;
    vor_uchar fscal2;
    vor_uchar fscal1;
    vor_uchar fscal0;
    vor_uchar rsrvd_0x29;
    vor_uchar rsrvd_0x2A;
    vor_uchar rsrvd_0x2B;
    vor_uchar test2;
    vor_uchar test1;
    vor_uchar test0;
    vor_uchar partnum;
    vor_uchar version;
    vor_uchar freqest;
    vor_uchar crc_reg;
    vor_uchar rssi;
    vor_uchar marcstate;
    vor_uchar rsrvd_0x36;
    vor_uchar rsrvd_0x37;
    vor_uchar pktstatus;
    vor_uchar rsrvd_0x39;
    vor_uchar txbytes;
    vor_uchar rxbytes;
    vor_uchar rsrvd_0x3C;
    vor_uchar rsrvd_0x3D;
    vor_uchar pa_table;
} SUB1G_CONFIG_REG;
VOR_LAYOUT(sizeof(SUB1G_CONFIG_REG) == 58);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, rsrvd_0x20) == 30);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, test2) == 40);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, pa_table) == 57);

/**
 * Sets an interface's frequency.
 *
 * @param interface_num  passed to the manager as it is
 * @param frequency      passed to the manager as it is, its unit too
 */
vor_int32 vor_cfg_set_sub1g_frequency(vor_int16 interface_num, vor_int16 frequency);

/**
 * Binds a stream and its classifier to a data channel.
 *
 * @param port_num      passed to the manager as it is
 * @param stream_name   passed to the manager as it is
 * @param classifier    passed to the manager as it is
 * @param channel_name  passed to the manager as it is
 */
vor_int32 vor_cfg_sub1g_set_channel(vor_int16 port_num, vor_char* stream_name, vor_uchar classifier,
                                    vor_char* channel_name);

/**
 * Reads the transceiver's registers. vor_errno is left alone.
 *
 * @param sub1g_reg  receives a pointer to the snapshot, in a buffer that is already handed back: copy it at once, never
 *                   free it. Preset it to null: an answer that is no snapshot leaves it and still returns 0
 * @return 0 answered; -1 for every failure
 */
vor_int32 vor_cfg_get_reg_values(SUB1G_CONFIG_REG** sub1g_reg);

/**
 * Sets an interface's power.
 *
 * @param interface_num  passed to the manager as it is
 * @param power          passed to the manager as it is, its unit too
 */
vor_int32 vor_cfg_set_sub1g_power(vor_int16 interface_num, vor_int16 power);

VOR_DECLARATIONS_END

#endif
