# SPDX-License-Identifier: MIT
SUMMARY = "Device-management configuration library of the gateway"
DESCRIPTION = "The library that front ends use to change a gateway's settings, and vorcfg, a command line for its calls."
SECTION = "libs"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=db942930d10750ef6f85126875cfb077"

# the gateway's own layer provides libvorinfra
DEPENDS = "vorinfra"

# unpacked to the default S
SRC_URI = "file://${BP}.tar.gz"

inherit cmake

PACKAGECONFIG ??= "tools manual"
PACKAGECONFIG[tools] = "-DDEVICE_MGMT_TOOLS=ON,-DDEVICE_MGMT_TOOLS=OFF,fmt nlohmann-json"
# vorcfg prints its manual pages, built for the build machine
PACKAGECONFIG[manual] = "-DDEVICE_MGMT_MANUAL=ON,-DDEVICE_MGMT_MANUAL=OFF"
PACKAGECONFIG[prompt] = "-DDEVICE_MGMT_PROMPT=ON,-DDEVICE_MGMT_PROMPT=OFF,libedit"

EXTRA_OECMAKE = "-DCMAKE_BUILD_TYPE=MinSizeRel -DVORINFRA_LIBRARY=${STAGING_LIBDIR}/libvorinfra.so"

PACKAGES =+ "${PN}-tools"
FILES:${PN}-tools = "${bindir}/vorcfg ${datadir}/bash-completion ${datadir}/zsh ${nonarch_libdir}/systemd"

# named here, because the platform library's name has no version
RDEPENDS:${PN} = "vorinfra"
RDEPENDS:${PN}-tools = "vorinfra"
COMPATIBLE_HOST = "(arm|aarch64|x86_64|riscv64).*-linux.*"
