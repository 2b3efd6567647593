// strips.hpp: how calls end under every fault, one cell "return/vor_errno/buffers" for each.
//
// vor_errno begins at 55, so that 0 is cleared, 55 untouched and anything else a status. Buffers: q the request, p the
// response; small letters are handed back, in that order, capitals stay taken. A fault that does not concern a call
// ends as its last cell does, where nothing fails. A refused exchange or send is refused with -7.
#pragma once

struct Strip {
    const char* name;
    const char* cells;
};

namespace ends {

// clang-format off
//      no         no         no         null       null       refused    answer's   answer's   empty      status     status     status
//      endpoint   request    response   meta-data  payload               low half   high half  answer     7          1          0

// Answered: vor_errno cleared, the lone request kept, the null payload left to the serializer.
inline constexpr Strip gpio{"gpio",
       "-1/0/-     -4/0/-     -4/0/Q     0/0/qp     0/0/qp     -3/0/qp    -4/0/qp    0/0/qp     -4/0/qp    -1/7/qp    -1/1/qp    0/0/qp"};
inline constexpr Strip gpio_name{"gpio_name",
       "-1/0/-     -4/0/-     -4/0/Q     0/0/qp     -4/0/QP    -3/0/qp    -4/0/qp    0/0/qp     -4/0/qp    -1/7/qp    -1/1/qp    0/0/qp"};
inline constexpr Strip can{"can",
       "-1/0/-     -4/0/-     -4/0/Q     0/0/qp     0/0/qp     -3/0/qp    -4/0/qp    -4/0/qp    -4/0/qp    -1/7/qp    -1/1/qp    0/0/qp"};
inline constexpr Strip can_name{"can_name",
       "-1/0/-     -4/0/-     -4/0/Q     0/0/qp     -4/0/QP    -3/0/qp    -4/0/qp    -4/0/qp    -4/0/qp    -1/7/qp    -1/1/qp    0/0/qp"};
inline constexpr Strip syslog{"syslog",
       "-1/0/-     -4/0/-     -4/0/Q     0/0/qp     -4/0/QP    -3/0/qP    -4/0/qp    0/0/qp     -4/0/QP    -1/7/qp    -1/1/qp    0/0/qp"};

// Answered: vor_errno cleared, the lone request handed back.
inline constexpr Strip radio{"radio",
       "-1/0/-     -4/0/-     -4/0/q     0/0/qp     0/0/qp     -3/0/qp    -4/0/qp    0/0/qp     -4/0/qp    -1/7/qp    -1/1/qp    0/0/qp"};
inline constexpr Strip radio_channel{"radio_channel",
       "-1/0/-     -4/0/-     -4/0/q     0/0/qp     -4/0/qp    -3/0/qp    -4/0/qp    0/0/qp     -4/0/qp    -1/7/qp    -1/1/qp    0/0/qp"};
inline constexpr Strip sensor{"sensor",
       "-1/0/-     -4/0/-     -4/0/q     0/0/qp     -4/0/qp    -3/0/qp    -4/0/qp    0/0/qp     -4/0/qP    -1/7/qp    -1/1/qp    0/0/qp"};
inline constexpr Strip serial_speed{"serial_speed",
       "-1/0/-     -4/0/-     -4/0/q     0/0/qp     0/0/qp     -3/0/qp    -4/0/qp    -4/0/qp    -4/0/qp    -1/7/qp    -1/1/qp    0/0/qp"};
inline constexpr Strip serial_unread{"serial_unread",
       "-1/0/-     -4/0/-     -4/0/q     -4/0/qp    -4/0/qp    -3/0/qp    -4/0/qp    -4/0/qp    -4/0/qp    -4/0/qp    -4/0/qp    -4/0/qp"};
inline constexpr Strip address{"address",
       "-1/0/-     -4/0/-     -4/0/q     0/0/qp     -4/0/QP    -3/0/qp    -4/0/qp    0/0/qp     -4/0/QP    -1/7/qp    -1/1/qp    0/0/qp"};
inline constexpr Strip address_unsent{"address_unsent",
       "-1/0/-     -4/0/-     -4/0/q     -4/0/qp    -4/0/QP    -4/0/qp    -4/0/qp    -4/0/qp    -4/0/qp    -4/0/qp    -4/0/qp    -4/0/qp"};
inline constexpr Strip address_range{"address_range",
       "-1/0/-     -4/0/-     -4/0/q     -4/0/qp    -4/0/qp    -3/0/qp    -4/0/qp    0/0/qp     -4/0/QP    -1/7/qp    -1/1/qp    0/0/qp"};
inline constexpr Strip service_chain{"service_chain",
       "-1/0/-     -4/0/-     -4/0/q     -4/0/qp    -4/0/qp    -3/0/qp    -1/0/QP    0/0/qp     -4/0/qp    -1/7/qp    -1/1/qp    0/0/qp"};

// Answered: vor_errno set only by a status.
inline constexpr Strip dhcp_client{"dhcp_client",
       "-1/55/-    -4/55/-    -4/55/q    0/55/qp    -4/55/QP   -3/55/qp   -4/55/qp   0/55/qp    -4/55/QP   -1/7/qp    -1/1/qp    0/55/qp"};
inline constexpr Strip mqtt{"mqtt",
       "-1/55/-    -4/55/-    -4/55/q    -4/55/qp   -4/55/qp   -3/55/qp   -4/55/qp   0/55/qp    -4/55/QP   -1/7/qp    -1/1/qp    0/55/qp"};
inline constexpr Strip mqtt_server{"mqtt_server",
       "-1/55/-    -4/55/-    -4/55/q    -4/55/qp   -4/55/qp   -3/55/qp   -4/55/qp   0/55/qp    -4/55/qp   -1/7/qp    -1/1/qp    0/55/qp"};
inline constexpr Strip serial_channel{"serial_channel",
       "-1/55/-    -4/55/-    -4/55/q    0/55/qp    -4/55/qp   -3/55/qp   -4/55/qp   -4/55/qp   -4/55/qp   -1/7/qp    -1/1/qp    0/55/qp"};
inline constexpr Strip latitude{"latitude",
       "-1/55/-    -4/55/-    -4/55/Q    -1001/55/qp -4/55/qp  -4/55/qp   -1001/55/qp -1001/55/qp -4/55/qp -1001/55/qp 0/55/qp   -1001/55/qp"};
inline constexpr Strip longitude{"longitude",
       "-1/55/-    -4/55/-    -4/55/Q    -1002/55/qp -4/55/qp  -4/55/qp   -1002/55/qp -1002/55/qp -4/55/qp -1002/55/qp 0/55/qp   -1002/55/qp"};

// Queries of records.
inline constexpr Strip statistics{"statistics",
       "null/55/-  null/55/-  null/55/Q  answer/55/qp null/55/qp null/55/qP null/55/qp answer/55/qp null/55/QP answer/55/qp answer/55/qp answer/55/qp"};
inline constexpr Strip registers{"registers",
       "-1/55/-    -1/55/-    -1/55/Q    0/55/qp    0/55/qp    -1/55/qP   0/55/qp    0/55/qp    0/55/qp    0/55/qp    0/55/qp    0/55/qp"};

// One-way.
inline constexpr Strip one_way{"one_way",
       "-1/55/-    -4/55/-    0/55/q     0/55/q     -4/55/Q    -3/55/q    0/55/q     0/55/q     0/55/q     0/55/q     0/55/q     0/55/q"};
inline constexpr Strip one_way_dropped{"one_way_dropped",
       "-1/55/-    -4/55/-    0/55/q     0/55/q     -4/55/q    -3/55/q    0/55/q     0/55/q     0/55/q     0/55/q     0/55/q     0/55/q"};
inline constexpr Strip host_name{"host_name",
       "-1/55/-    -4/55/-    0/55/q     0/55/q     0/55/q     -3/55/q    0/55/q     0/55/q     0/55/q     0/55/q     0/55/q     0/55/q"};
inline constexpr Strip debug{"debug",
       "-1/55/-    -4/55/-    0/55/q     0/55/q     -4/55/q    0/55/q     0/55/q     0/55/q     0/55/q     0/55/q     0/55/q     0/55/q"};
inline constexpr Strip gpio_value{"gpio_value",
       "-1/0/-     -4/0/-     0/0/q      0/0/q      -4/0/Q     -3/0/q     0/0/q      0/0/q      0/0/q      0/0/q      0/0/q      0/0/q"};
inline constexpr Strip mqtt_session{"mqtt_session",
       "-1/55/-    -4/55/-    0/55/Q     0/55/Q     -4/55/q    -3/55/q    0/55/Q     0/55/Q     0/55/Q     0/55/Q     0/55/Q     0/55/Q"};
inline constexpr Strip wifi_monitor{"wifi_monitor",
       "-1/55/-    -1/55/-    0/55/q     0/55/q     -1/55/Q    -1/55/Q    0/55/q     0/55/q     0/55/q     0/55/q     0/55/q     0/55/q"};
inline constexpr Strip snmp_one_way{"snmp_one_way",
       "-1/0/-     -4/0/-     -4/0/q     0/0/QP     0/0/QP     -7/0/QP    0/0/QP     0/0/QP     0/0/QP     0/0/QP     0/0/QP     0/0/QP"};

// Calls that do nothing, and calls that stop at their arguments.
inline constexpr Strip stub{"stub",
       "0/55/-     0/55/-     0/55/-     0/55/-     0/55/-     0/55/-     0/55/-     0/55/-     0/55/-     0/55/-     0/55/-     0/55/-"};
inline constexpr Strip too_many_servers{"too_many_servers",
       "-1151/55/- -1151/55/- -1151/55/- -1151/55/- -1151/55/- -1151/55/- -1151/55/- -1151/55/- -1151/55/- -1151/55/- -1151/55/- -1151/55/-"};
// clang-format on

} // namespace ends
