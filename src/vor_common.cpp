// Endpoints, text converters and the delayed restart.
#include <device_mgmt/common.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame restart = sap(0) | one_way | null_payload_drops;
constexpr MessageId restart_notice = 12;
constexpr vor_uint16 restart_log = 0x8000;

VOR_IPC_HANDLE* p_ipc_handle;
VOR_UNIX_SOCKET* p_sock_handle;
vor_uchar user_flag;
sigset_t mask;

constexpr vor_uchar not_hexadecimal = 16;
constexpr vor_int32 bad_mac_address = -1500;

vor_uchar hex_digit(vor_char ch)
{
    if (ch >= '0' && ch <= '9') {
        return static_cast<vor_uchar>(ch - '0');
    }
    if (ch >= 'a' && ch <= 'f') {
        return static_cast<vor_uchar>(ch - 'a' + 10);
    }
    if (ch >= 'A' && ch <= 'F') {
        return static_cast<vor_uchar>(ch - 'A' + 10);
    }
    return not_hexadecimal;
}

} // namespace

vor_int32 vor_errno = 0;

vor_int16 vor_cfg_create_ipc_endpoint(vor_uint16 sap)
{
    p_ipc_handle = vor_ipc_bind(sap, 0);
    if (p_ipc_handle == nullptr) {
        std::puts("ERROR : IPC Bind failed ");
        return -1;
    }
    sigemptyset(&mask);
    sigaddset(&mask, SIGRTMIN + 5);
    sigprocmask(SIG_BLOCK, &mask, nullptr);
    return 0;
}

vor_int32 vor_cfg_remove_ipc_endpoint(void)
{
    const vor_int32 result = vor_ipc_unbind(p_ipc_handle);
    p_ipc_handle = nullptr;
    return result;
}

VOR_IPC_HANDLE* vor_cfg_get_ipc_endpoint(void)
{
    return p_ipc_handle;
}

void vor_cfg_set_ipc_endpoint(VOR_IPC_HANDLE* p_ipc_hndl)
{
    p_ipc_handle = p_ipc_hndl;
}

vor_int16 vor_cfg_create_sock_endpoint(void)
{
    static vor_char konfd_path[] = "/tmp/konfd.socket";
    p_sock_handle = static_cast<VOR_UNIX_SOCKET*>(vor_socket_create(1, 1, 0));
    if (p_sock_handle == nullptr || vor_socket_config_unix(p_sock_handle, konfd_path) == -1 ||
        vor_socket_connect(p_sock_handle, 1) == -1) {
        return -1; // a socket once created is kept until it is removed
    }
    return 0;
}

vor_int32 vor_cfg_remove_sock_endpoint(void)
{
    const vor_int32 result = vor_socket_close(p_sock_handle, 1);
    p_sock_handle = nullptr;
    return result;
}

VOR_UNIX_SOCKET* vor_cfg_get_sock_endpoint(void)
{
    return p_sock_handle;
}

vor_int16 vor_cfg_set_user_flag(vor_uchar flag)
{
    user_flag = flag;
    return 0;
}

vor_uchar vor_cfg_get_user_flag(void)
{
    return user_flag;
}

vor_int32 vor_convert_mac_address_from_str_to_byte(vor_char* mac_addr_str, vor_uchar* mac_addr_byte)
{
    const vor_char* group = mac_addr_str;
    for (int i = 0; i < 6; ++i) {
        if (i != 0) {
            if (*group == '\0') {
                return bad_mac_address;
            }
            ++group; // the separator, whatever it is
        }
        const vor_uchar high = hex_digit(group[0]);
        if (high == not_hexadecimal) {
            return bad_mac_address;
        }
        const vor_uchar low = hex_digit(group[1]);
        if (low == not_hexadecimal) {
            return bad_mac_address;
        }
        mac_addr_byte[i] = static_cast<vor_uchar>(high * 16 + low);
        group += 2;
    }
    return 0;
}

vor_int32 ip_aton(vor_char* ip_address, vor_ip_address* ip)
{
    vor_uint32 value = 0;
    const vor_char* next = ip_address;
    for (int part = 0; part < 4; ++part) {
        vor_uint32 number = 0; // an empty part counts as 0
        for (; *next >= '0' && *next <= '9'; ++next) {
            number = number * 10 + static_cast<vor_uint32>(*next - '0');
            if (number > 255) {
                return -1;
            }
        }
        if (part < 3 && *next++ != '.') {
            return -1;
        }
        value = value * 256 + number;
    }
    *ip = vor_htobe32(value);
    return 0;
}

vor_int16 vor_system_restart(vor_int16 time_till_restart)
{
    const vor_int32 code = request<restart, restart_notice, 2>(field<0, vor_int16>(time_till_restart));
    if (code != ok) {
        return static_cast<vor_int16>(code);
    }
    VOR_TIMER_HANDLE* const timer = vor_timer_create(0, nullptr, vor_restart_timer);
    vor_dbg_log(restart_log, " System restart in %d seconds\n", time_till_restart);
    vor_timer_start(timer, static_cast<vor_uint32>(time_till_restart) * 1000u, 0);
    return 0;
}

void vor_restart_timer(void)
{
    [[maybe_unused]] const int result = std::system("reboot");
}
