/**
 * @file
 * debug.h: debug output of the managers and the platform's log file.
 *
 * Both messages are one-way; vor_errno is never touched.
 */
#ifndef DEVICE_MGMT_DEBUG_H
#define DEVICE_MGMT_DEBUG_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

typedef struct _log_info_ {
    vor_int32 log_level; /* a mask; 0 switches off */
    vor_uint16 sap_id;   /* 0 for all managers */
    vor_char proc_name[25];
} LOG_INFO;
VOR_LAYOUT(sizeof(LOG_INFO) == 32);
VOR_LAYOUT(offsetof(LOG_INFO, log_level) == 0);
VOR_LAYOUT(offsetof(LOG_INFO, sap_id) == 4);
VOR_LAYOUT(offsetof(LOG_INFO, proc_name) == 6);

typedef struct _log_upload_file_ {
    vor_int32 set_option;
    char name[50];
    char server[50];
    char user_name[50];
    char password[50];
    char file_name[50];
    vor_int32 upload_frequency;
} LOG_UPLOAD_FILE_INFO;
VOR_LAYOUT(sizeof(LOG_UPLOAD_FILE_INFO) == 260);
VOR_LAYOUT(offsetof(LOG_UPLOAD_FILE_INFO, set_option) == 0);
VOR_LAYOUT(offsetof(LOG_UPLOAD_FILE_INFO, name) == 4);
VOR_LAYOUT(offsetof(LOG_UPLOAD_FILE_INFO, server) == 54);
VOR_LAYOUT(offsetof(LOG_UPLOAD_FILE_INFO, user_name) == 104);
VOR_LAYOUT(offsetof(LOG_UPLOAD_FILE_INFO, password) == 154);
VOR_LAYOUT(offsetof(LOG_UPLOAD_FILE_INFO, file_name) == 204);
VOR_LAYOUT(offsetof(LOG_UPLOAD_FILE_INFO, upload_frequency) == 256);

/**
 * Enable or disable a manager's debug output.
 *
 * @param en_dis_flag  0 switches the level off, any other value on; ignored for level "ipc"
 * @param task_name    sysmgr platmgr restmgr gpiomgr adcmgr blemgr ethmgr svcmgr datamgr appmgr mqttmgr serialmgr
 *                     sensormgr sub1gmgr modbusmgr canmgr ntpmgr snmpmgr, or all
 * @param level        error, warning, info, all; or ipc: switches the platform's own trace, no message is sent
 * @return 0, also when the message could not be sent; -1 no endpoint or an unknown level, judged before the name;
 *         -4 an unknown name, or no buffer
 */
vor_int32 vor_cfg_set_debug_info(vor_boolean en_dis_flag, vor_char* task_name, vor_char* level);

/**
 * Set up the upload of the platform's log file.
 * Fields that the option does not name are sent as whatever the buffer held.
 *
 * @param set_option        1 sets the server and its credentials, 2 the file name, 3 the frequency; any other value
 *                          writes nothing and sends the buffer as it is
 * @param name              for options 1, 2 and 3; this and the other texts: 49 characters fit, more overwrite the
 *                          fields that follow, at most to the end of the record
 * @param log_file_name     for option 2
 * @param ip_address        server, for option 1, passed to the manager as text
 * @param user_name         for option 1
 * @param password          for option 1
 * @param upload_frequency  for option 3, passed to the manager unchanged
 */
vor_int32 vor_cfg_set_log_file(vor_int32 set_option, vor_char* name, vor_char* log_file_name, vor_char* ip_address,
                               vor_char* user_name, vor_char* password, vor_int32 upload_frequency);

VOR_DECLARATIONS_END

#endif
