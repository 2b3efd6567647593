/**
 * @file
 * version.h: the library's version, known when a program is compiled.
 *
 * The version is defined only here: the build, the packages and the SONAME take it
 * from this file. Within one major version programs keep working without being
 * rebuilt: a minor version only adds.
 */
#ifndef DEVICE_MGMT_VERSION_H
#define DEVICE_MGMT_VERSION_H
/* SPDX-License-Identifier: MIT */

#define DEVICE_MGMT_VERSION_MAJOR 1
#define DEVICE_MGMT_VERSION_MINOR 0
#define DEVICE_MGMT_VERSION_PATCH 0

/* Is it this version or later? For #if and static_assert; nothing is called. */
#define DEVICE_MGMT_VERSION_AT_LEAST(major, minor, patch)                                                              \
    (DEVICE_MGMT_VERSION_MAJOR * 1000000 + DEVICE_MGMT_VERSION_MINOR * 1000 + DEVICE_MGMT_VERSION_PATCH >=             \
     (major)*1000000 + (minor)*1000 + (patch))

#endif
