################################################################################
#
# device-mgmt
#
################################################################################

DEVICE_MGMT_VERSION = 1.0.0
# the sources, in an external tree
DEVICE_MGMT_SITE = $(BR2_EXTERNAL_GATEWAY_PATH)/sources/device-mgmt
DEVICE_MGMT_SITE_METHOD = local
DEVICE_MGMT_LICENSE = MIT
DEVICE_MGMT_LICENSE_FILES = LICENSE
DEVICE_MGMT_INSTALL_STAGING = YES
DEVICE_MGMT_DEPENDENCIES = vorinfra
DEVICE_MGMT_CONF_OPTS = \
	-DCMAKE_BUILD_TYPE=MinSizeRel \
	-DVORINFRA_LIBRARY=$(STAGING_DIR)/usr/lib/libvorinfra.so

ifeq ($(BR2_PACKAGE_DEVICE_MGMT_TOOLS),y)
DEVICE_MGMT_DEPENDENCIES += fmt json-for-modern-cpp
# images have no manual pages
DEVICE_MGMT_CONF_OPTS += -DDEVICE_MGMT_TOOLS=ON -DDEVICE_MGMT_MANUAL=OFF
ifeq ($(BR2_PACKAGE_LIBEDIT),y)
DEVICE_MGMT_DEPENDENCIES += libedit
DEVICE_MGMT_CONF_OPTS += -DDEVICE_MGMT_PROMPT=ON
else
DEVICE_MGMT_CONF_OPTS += -DDEVICE_MGMT_PROMPT=OFF
endif
else
DEVICE_MGMT_CONF_OPTS += -DDEVICE_MGMT_TOOLS=OFF
endif

$(eval $(cmake-package))
