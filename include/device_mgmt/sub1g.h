/**
 * @file
 * sub1g.h: the sub-1 GHz radio, held by its manager (sub1gmgr, SAP 8).
 *
 * The three setters set vor_errno to 0 first.
 *
 * Message buffers kept by vor_cfg_get_reg_values: the request's, when none is left
 * for the answer; the answer's, when the exchange is refused.
 */
#ifndef DEVICE_MGMT_SUB1G_H
#define DEVICE_MGMT_SUB1G_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

typedef struct _vor_sub1gmgr_set_status_ {
    vor_int32 set_status;
} VOR_SUB1GMGR_SET_STATUS;
VOR_LAYOUT(sizeof(VOR_SUB1GMGR_SET_STATUS) == 4);
VOR_LAYOUT(offsetof(VOR_SUB1GMGR_SET_STATUS, set_status) == 0);

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
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, iocfg2) == 0);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, iocfg1) == 1);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, iocfg0) == 2);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, fifothr) == 3);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, sync1) == 4);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, sync0) == 5);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, pktlen) == 6);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, pktctrl1) == 7);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, pktctrl0) == 8);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, addr) == 9);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, channr) == 10);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, fsctrl1) == 11);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, fsctrl0) == 12);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, freq2) == 13);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, freq1) == 14);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, freq0) == 15);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, mdmcfg4) == 16);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, mdmcfg3) == 17);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, mdmcfg2) == 18);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, mdmcfg1) == 19);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, mdmcfg0) == 20);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, deviatn) == 21);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, mcsm2) == 22);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, mcsm1) == 23);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, mcsm0) == 24);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, foccfg) == 25);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, bscfg) == 26);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, agcctrl2) == 27);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, agcctrl1) == 28);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, agcctrl0) == 29);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, rsrvd_0x20) == 30);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, frend1) == 31);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, frend0) == 32);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, fscal3) == 33);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, fscal2) == 34);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, fscal1) == 35);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, fscal0) == 36);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, rsrvd_0x29) == 37);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, rsrvd_0x2A) == 38);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, rsrvd_0x2B) == 39);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, test2) == 40);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, test1) == 41);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, test0) == 42);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, partnum) == 43);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, version) == 44);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, freqest) == 45);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, crc_reg) == 46);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, rssi) == 47);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, marcstate) == 48);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, rsrvd_0x36) == 49);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, rsrvd_0x37) == 50);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, pktstatus) == 51);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, rsrvd_0x39) == 52);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, txbytes) == 53);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, rxbytes) == 54);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, rsrvd_0x3C) == 55);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, rsrvd_0x3D) == 56);
VOR_LAYOUT(offsetof(SUB1G_CONFIG_REG, pa_table) == 57);

/**
 * Set an interface's frequency.
 *
 * @param interface_num  passed to the manager unchanged
 * @param frequency      in the manager's unit, passed to the manager unchanged
 */
vor_int32 vor_cfg_set_sub1g_frequency(vor_int16 interface_num, vor_int16 frequency);

/**
 * Bind a stream and its classifier to a data channel.
 *
 * @param port_num      passed to the manager unchanged
 * @param stream_name   passed to the manager unchanged
 * @param classifier    passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 */
vor_int32 vor_cfg_sub1g_set_channel(vor_int16 port_num, vor_char* stream_name, vor_uchar classifier,
                                    vor_char* channel_name);

/**
 * Read the transceiver's registers. vor_errno is left alone.
 *
 * @param sub1g_reg  receives a pointer to the snapshot, in a buffer that is already released: copy it at once, never
 *                   free it. Set it to null first: an answer that is not a snapshot leaves it and still returns 0. A
 *                   null sub1g_reg ends the program
 * @return 0 answered; -1 for every failure, there is no -3 or -4
 */
vor_int32 vor_cfg_get_reg_values(SUB1G_CONFIG_REG** sub1g_reg);

/**
 * Set an interface's power.
 *
 * @param interface_num  passed to the manager unchanged
 * @param power          in the manager's unit, passed to the manager unchanged
 */
vor_int32 vor_cfg_set_sub1g_power(vor_int16 interface_num, vor_int16 power);

VOR_DECLARATIONS_END

#endif
