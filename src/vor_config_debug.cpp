// Debug output of the managers and the platform's log file. Both are records
// that the option or the level shapes, so they are written out.
#include <device_mgmt/common.h>
#include <device_mgmt/debug.h>

#include <cstring>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame debug_record = sap(0) | one_way | null_payload_drops;
constexpr MessageId debug_level = 27;
constexpr Frame log_file = sap(2) | one_way | null_payload_drops;
constexpr MessageId log_file_upload = 0x2028;

struct Word {
    vor_char name[10]; // no pointers: nothing to relocate
    vor_uchar number;
};

constexpr vor_uchar ipc_level = 8; // the platform's own trace
constexpr Word levels[] = {{"error", 1}, {"warning", 2}, {"info", 4}, {"all", 7}, {"ipc", ipc_level}};

// A module's number is its manager's SAP.
constexpr Word modules[] = {
    {"sysmgr", 1},   {"platmgr", 2},    {"restmgr", 3},    {"gpiomgr", 4},  {"adcmgr", 5},
    {"blemgr", 6},   {"ethmgr", 7},     {"svcmgr", 9},     {"datamgr", 10}, {"appmgr", 13},
    {"mqttmgr", 15}, {"serialmgr", 16}, {"sensormgr", 14}, {"sub1gmgr", 8}, {"modbusmgr", 20},
    {"canmgr", 19},  {"ntpmgr", 22},    {"snmpmgr", 21},   {"all", 0},
};

template <std::size_t count>
const Word* find(const Word (&words)[count], const vor_char* name)
{
    for (const Word& word : words) {
        if (std::strcmp(word.name, name) == 0) {
            return &word;
        }
    }
    return nullptr;
}

// Text too long for its field overwrites the fields that follow, up to the end of the record.
void copy_text(vor_char* field, vor_char* record_end, const vor_char* text)
{
    while (*text != '\0' && field != record_end - 1) {
        *field++ = *text++;
    }
    *field = '\0';
}

} // namespace

vor_int32 vor_cfg_set_debug_info(vor_boolean en_dis_flag, vor_char* task_name, vor_char* level)
{
    VOR_IPC_HANDLE* const handle = vor_cfg_get_ipc_endpoint();
    if (handle == nullptr) {
        return no_endpoint;
    }
    const Word* const mask = find(levels, level);
    if (mask == nullptr) {
        return -1;
    }
    const Word* const module = find(modules, task_name);
    if (module == nullptr) {
        return no_status;
    }
    if (mask->number == ipc_level) {
        vor_ipc_debug(handle, module->number);
        return ok;
    }
    Exchange exchange;
    const vor_int32 code = exchange.prepare<debug_record, debug_level, sizeof(LOG_INFO)>(
        FIELD(LOG_INFO, log_level)(en_dis_flag != 0 ? mask->number : vor_uchar{0}),
        FIELD(LOG_INFO, sap_id)(module->number));
    if (code != ok) {
        return code;
    }
    vor_strcpy(reinterpret_cast<vor_char*>(exchange.payload) + offsetof(LOG_INFO, proc_name), task_name);
    exchange.send(); // whether it was sent is not reported
    return ok;
}

vor_int32 vor_cfg_set_log_file(vor_int32 set_option, vor_char* name, vor_char* log_file_name, vor_char* ip_address,
                               vor_char* user_name, vor_char* password, vor_int32 upload_frequency)
{
    Exchange exchange;
    const vor_int32 code = exchange.prepare<log_file, log_file_upload, sizeof(LOG_UPLOAD_FILE_INFO)>();
    if (code != ok) {
        return code;
    }
    auto* const info = reinterpret_cast<LOG_UPLOAD_FILE_INFO*>(exchange.payload);
    vor_char* const end = reinterpret_cast<vor_char*>(info + 1);
    if (set_option >= 1 && set_option <= 3) { // any other option sends the buffer as it is
        info->set_option = set_option;
        copy_text(info->name, end, name);
        if (set_option == 1) {
            copy_text(info->server, end, ip_address);
            copy_text(info->user_name, end, user_name);
            copy_text(info->password, end, password);
        } else if (set_option == 2) {
            copy_text(info->file_name, end, log_file_name);
        } else {
            info->upload_frequency = upload_frequency;
        }
    }
    return exchange.send();
}
