// Analogue inputs (adcmgr). The tags are shifted against GPIO's by the second address.
#include <device_mgmt/adc.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame adc = sap(5) | clears_errno | id_low_half; // lone request kept
constexpr Frame adc_named = adc | null_payload_keeps;      // the name call alone checks the payload area first
constexpr Frame adc_counters = sap(5) | id_low_half | null_payload_drops | refused_keeps_response;
constexpr MessageId adc_setting = 0x5004;

} // namespace

vor_int32 vor_cfg_set_adc_config_polling(vor_int16 adc_index, vor_int16 channel_index, vor_int16 mode,
                                         vor_uint32 polling_freq, vor_int16 option)
{
    return request<adc, adc_setting>(int16<1>(adc_index), int16<2>(channel_index), int16<3>(mode),
                                     int32<5>(polling_freq), int16<7>(option));
}

vor_int32 vor_cfg_set_adc_config_interrupt(vor_int16 /*adc_index*/, vor_int16 /*cahnnel_index*/, vor_int16 /*mode*/,
                                           vor_uchar /*interrupt_type*/, vor_int16 /*option*/)
{
    return 0;
}

ADC_PIN_STATS* vor_cfg_get_adc_port_stats(vor_int16 adc_index, vor_int16 channel_index)
{
    return statistics<ADC_PIN_STATS, adc_counters, 0x5007, sizeof(ADC_PIN_NO)>(
        FIELD(ADC_PIN_NO, adc_index)(adc_index), FIELD(ADC_PIN_NO, channel_index)(channel_index));
}

vor_int32 vor_cfg_set_adc_channel_name(vor_uchar adc_index, vor_uchar channel_index, vor_char* name, vor_boolean set)
{
    return request<adc_named, adc_setting>(int16<1>(adc_index), int16<2>(channel_index), str<6>(name), int16<7>(set));
}

vor_int32 vor_cfg_reset_adc_config_mode(vor_int16 adc_index, vor_int16 channel_index, vor_int16 mode, vor_int16 option)
{
    return request<adc, adc_setting>(int16<1>(adc_index), int16<2>(channel_index), int16<3>(mode), int16<7>(option));
}
