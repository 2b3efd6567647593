/**
 * @file
 * adc.h: analogue inputs, held by the ADC manager (adcmgr, SAP 5).
 *
 * An input is a channel of a converter. The three answered setters set
 * vor_errno to 0 first; the other two calls leave it alone.
 *
 * Message buffers kept: the request's, when none is left for the answer; both, when
 * the request's has no room for a channel name. By the statistics: the answer's,
 * when the exchange is refused; both, when the answer has no record.
 */
#ifndef DEVICE_MGMT_ADC_H
#define DEVICE_MGMT_ADC_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

typedef struct adc_pin_no {
    vor_uint16 adc_index;
    vor_uint16 channel_index;
} ADC_PIN_NO;
VOR_LAYOUT(sizeof(ADC_PIN_NO) == 4);
VOR_LAYOUT(offsetof(ADC_PIN_NO, adc_index) == 0);
VOR_LAYOUT(offsetof(ADC_PIN_NO, channel_index) == 2);

typedef struct adc_pin_stats {
    vor_uint16 logical_port_no;
    vor_uchar read_mode; /* in the manager's coding */
    vor_uint64 polling_count;
    vor_uint64 interrupt_count;
} ADC_PIN_STATS;
VOR_LAYOUT(sizeof(ADC_PIN_STATS) == 24);
VOR_LAYOUT(offsetof(ADC_PIN_STATS, logical_port_no) == 0);
VOR_LAYOUT(offsetof(ADC_PIN_STATS, read_mode) == 2);
VOR_LAYOUT(offsetof(ADC_PIN_STATS, polling_count) == 8);
VOR_LAYOUT(offsetof(ADC_PIN_STATS, interrupt_count) == 16);

typedef struct _vor_adcmgr_set_status_ {
    vor_int32 set_status;
} VOR_ADCMGR_SET_STATUS;
VOR_LAYOUT(sizeof(VOR_ADCMGR_SET_STATUS) == 4);
VOR_LAYOUT(offsetof(VOR_ADCMGR_SET_STATUS, set_status) == 0);

/**
 * Have an input read by polling.
 *
 * @param adc_index      converter
 * @param channel_index  channel on it
 * @param mode           read mode, passed to the manager unchanged
 * @param polling_freq   in the manager's unit, passed to the manager unchanged
 * @param option         passed to the manager unchanged
 */
vor_int32 vor_cfg_set_adc_config_polling(vor_int16 adc_index, vor_int16 channel_index, vor_int16 mode,
                                         vor_uint32 polling_freq, vor_int16 option);

/**
 * Do nothing. Inputs cannot be read by interrupt; the call is kept so that programs link.
 *
 * @param adc_index       accepted, never sent
 * @param cahnnel_index   accepted, never sent
 * @param mode            accepted, never sent
 * @param interrupt_type  accepted, never sent
 * @param option          accepted, never sent
 * @return 0
 */
vor_int32 vor_cfg_set_adc_config_interrupt(vor_int16 adc_index, vor_int16 cahnnel_index, vor_int16 mode,
                                           vor_uchar interrupt_type, vor_int16 option);

/**
 * Read an input's counters. vor_errno is left alone.
 *
 * @param adc_index      converter
 * @param channel_index  channel on it
 * @return the manager's record, in a buffer that is already released: copy it at once, never free it; null for
 *         every failure
 */
ADC_PIN_STATS* vor_cfg_get_adc_port_stats(vor_int16 adc_index, vor_int16 channel_index);

/**
 * Name the data channel an input feeds.
 *
 * @param adc_index      converter
 * @param channel_index  channel on it
 * @param name           channel name, passed to the manager unchanged
 * @param set            passed to the manager unchanged
 */
vor_int32 vor_cfg_set_adc_channel_name(vor_uchar adc_index, vor_uchar channel_index, vor_char* name, vor_boolean set);

/**
 * Reset an input's read mode.
 *
 * @param adc_index      converter
 * @param channel_index  channel on it
 * @param mode           read mode, passed to the manager unchanged
 * @param option         passed to the manager unchanged
 */
vor_int32 vor_cfg_reset_adc_config_mode(vor_int16 adc_index, vor_int16 channel_index, vor_int16 mode, vor_int16 option);

VOR_DECLARATIONS_END

#endif
