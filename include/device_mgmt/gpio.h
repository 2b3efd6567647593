/**
 * @file
 * gpio.h: digital inputs and outputs, held by the GPIO manager (gpiomgr, SAP 4).
 *
 * Every call but the statistics sets vor_errno to 0 first.
 *
 * Message buffers kept: the request's, when none is left for the answer; both, when
 * the request's has no room for a channel name. By vor_cfg_set_gpio_value: its only
 * one, when that has no room. By the statistics: the answer's, when the exchange is
 * refused; both, when the answer has no record.
 */
#ifndef DEVICE_MGMT_GPIO_H
#define DEVICE_MGMT_GPIO_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

typedef struct pin_no {
    vor_uint16 logical_port_no;
} GPIO_PIN_NO;
VOR_LAYOUT(sizeof(GPIO_PIN_NO) == 2);
VOR_LAYOUT(offsetof(GPIO_PIN_NO, logical_port_no) == 0);

typedef struct pin_stats {
    vor_uint16 logical_port_no;
    vor_uchar mode; /* read mode, in the manager's coding */
    vor_uint64 polling_count;
    vor_uint64 interrupt_count;
} GPIO_PIN_STATS;
VOR_LAYOUT(sizeof(GPIO_PIN_STATS) == 24);
VOR_LAYOUT(offsetof(GPIO_PIN_STATS, logical_port_no) == 0);
VOR_LAYOUT(offsetof(GPIO_PIN_STATS, mode) == 2);
VOR_LAYOUT(offsetof(GPIO_PIN_STATS, polling_count) == 8);
VOR_LAYOUT(offsetof(GPIO_PIN_STATS, interrupt_count) == 16);

typedef struct _vor_gpio_port_set_ {
    vor_uint16 gpio_sw_port;
    vor_uint16 value;
} VOR_GPIO_PORT_SET;
VOR_LAYOUT(sizeof(VOR_GPIO_PORT_SET) == 4);
VOR_LAYOUT(offsetof(VOR_GPIO_PORT_SET, gpio_sw_port) == 0);
VOR_LAYOUT(offsetof(VOR_GPIO_PORT_SET, value) == 2);

typedef struct _vor_gpiomgr_set_status_ {
    vor_int32 set_status;
} VOR_GPIOMGR_SET_STATUS;
VOR_LAYOUT(sizeof(VOR_GPIOMGR_SET_STATUS) == 4);
VOR_LAYOUT(offsetof(VOR_GPIOMGR_SET_STATUS, set_status) == 0);

/**
 * Set a port's direction.
 *
 * @param port_num   logical port
 * @param direction  passed to the manager unchanged
 * @param option     passed to the manager unchanged
 */
vor_int32 vor_cfg_set_gpio_direction(vor_int16 port_num, vor_int16 direction, vor_int16 option);

/**
 * Have a port read by interrupt.
 *
 * @param port_num        logical port
 * @param mode            read mode, passed to the manager unchanged
 * @param interrupt_type  passed to the manager unchanged
 * @param option          passed to the manager unchanged
 */
vor_int32 vor_cfg_set_gpio_config_interrupt(vor_int16 port_num, vor_int16 mode, vor_uchar interrupt_type,
                                            vor_int16 option);

/**
 * Have a port read by polling.
 *
 * @param port_num      logical port
 * @param mode          read mode, passed to the manager unchanged
 * @param polling_freq  in the manager's unit, passed to the manager unchanged
 * @param option        passed to the manager unchanged
 */
vor_int32 vor_cfg_set_gpio_config_polling(vor_int16 port_num, vor_int16 mode, vor_uint32 polling_freq,
                                          vor_int16 option);

/**
 * Name the data channel a port feeds.
 *
 * @param gpio_port  logical port
 * @param name       channel name, passed to the manager unchanged
 * @param set        passed to the manager unchanged
 */
vor_int32 vor_cfg_set_gpio_channel_name(vor_uchar gpio_port, vor_char* name, vor_boolean set);

/**
 * Drive an output. One-way: the manager's verdict never comes back.
 *
 * @param port_num  logical port
 * @param value     level, passed to the manager unchanged
 */
vor_int32 vor_cfg_set_gpio_value(vor_int16 port_num, vor_int16 value);

/**
 * Read a port's counters. vor_errno is left alone.
 *
 * @param port_num  logical port
 * @return the manager's record, in a buffer that is already released: copy it at once, never free it; null for
 *         every failure
 */
GPIO_PIN_STATS* vor_cfg_get_gpio_port_stats(vor_int16 port_num);

VOR_DECLARATIONS_END

#endif
