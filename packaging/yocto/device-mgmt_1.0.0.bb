# SPDX-License-Identifier: MIT
SUMMARY = "Device-management configuration library of the gateway"
DESCRIPTION = "The calls by which front ends change a gateway's settings, and vorcfg, the command line over them."
SECTION = "libs"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=db942930d10750ef6f85126875cfb077"

# libvorinfra comes from the gateway's own layer
DEPENDS = "vorinfra"

# unpacked where S points by default
SRC_URI = "file://${BP}.tar.gz"

inherit cmake

PACKAGECONFIG ??= "tools"
PACKAGECONFIG[tools] = "-DDEVICE_MGMT_TOOLS=ON,-DDEVICE_MGMT_TOOLS=OFF,fmt nlohmann-json"
PACKAGECONFIG[prompt] = "-DDEVICE_MGMT_PROMPT=ON,-DDEVICE_MGMT_PROMPT=OFF,libedit"

EXTRA_OECMAKE = "-DCMAKE_BUILD_TYPE=MinSizeRel -DVORINFRA_LIBRARY=${STAGING_LIBDIR}/libvorinfra.so"

PACKAGES =+ "${PN}-tools"
FILES:${PN}-tools = "${bindir}/vorcfg ${datadir}/bash-completion ${datadir}/zsh"

# the platform library has no version in its name, and no package of ours has it
RDEPENDS:${PN} = "vorinfra"
RDEPENDS:${PN}-tools = "vorinfra"
COMPATIBLE_HOST = "(arm|aarch64|x86_64|riscv64).*-linux.*"
