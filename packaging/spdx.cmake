# What a gateway gets, and what that contains and links, with versions and licences, in SPDX's tag-value format.
string(TIMESTAMP created "%Y-%m-%dT%H:%M:%SZ" UTC) # SOURCE_DATE_EPOCH, if set
set(spdx "SPDXVersion: SPDX-2.3
DataLicense: CC0-1.0
SPDXID: SPDXRef-DOCUMENT
DocumentName: device_mgmt-${PROJECT_VERSION}
DocumentNamespace: https://device-mgmt.example.org/spdx/${PROJECT_VERSION}/${CMAKE_SYSTEM_PROCESSOR}
Creator: Tool: CMake-${CMAKE_VERSION}
Created: ${created}
")

# spdx_package(NAME VERSION LICENCE COPYRIGHT RELATION...)
function(spdx_package name version licence copyright)
  string(APPEND spdx "
PackageName: ${name}
SPDXID: SPDXRef-${name}
PackageVersion: ${version}
PackageDownloadLocation: NOASSERTION
FilesAnalyzed: false
PackageLicenseConcluded: ${licence}
PackageLicenseDeclared: ${licence}
PackageCopyrightText: <text>${copyright}</text>
")
  foreach(relation IN LISTS ARGN)
    string(APPEND spdx "Relationship: SPDXRef-${relation} SPDXRef-${name}\n")
  endforeach()
  string(REPLACE "PackageVersion: \n" "" spdx "${spdx}") # unknown
  set(spdx "${spdx}" PARENT_SCOPE)
endfunction()

set(ours "2026 the device_mgmt authors")
spdx_package(device-mgmt ${PROJECT_VERSION} MIT "${ours}" "DOCUMENT DESCRIBES")
set(linked_by "device-mgmt DYNAMIC_LINK")
if(TARGET vorcfg)
  list(APPEND linked_by "vorcfg DYNAMIC_LINK")
  spdx_package(vorcfg ${PROJECT_VERSION} MIT "${ours}" "DOCUMENT DESCRIBES")
  string(APPEND spdx "Relationship: SPDXRef-vorcfg DYNAMIC_LINK SPDXRef-device-mgmt\n")
  set(version "")
  file(GLOB headers "${FMT_HEADERS_FOUND}/fmt/base.h" "${FMT_HEADERS_FOUND}/fmt/core.h") # depends on the version
  foreach(header IN LISTS headers)
    file(STRINGS "${header}" line REGEX "define FMT_VERSION [0-9]+$")
    if(line MATCHES "([0-9]+)(..)(..)$")
      string(REGEX REPLACE "[.]0([0-9])" ".\\1" version "${CMAKE_MATCH_1}.${CMAKE_MATCH_2}.${CMAKE_MATCH_3}")
    endif()
  endforeach()
  spdx_package(fmt "${version}" MIT "Victor Zverovich and {fmt} contributors" "vorcfg STATIC_LINK")
  file(STRINGS "${NLOHMANN_JSON_HEADERS_FOUND}/nlohmann/json.hpp" line REGEX "version [0-9.]+$" LIMIT_COUNT 1)
  string(REGEX REPLACE ".* " "" version "${line}")
  spdx_package(nlohmann-json "${version}" MIT "Niels Lohmann" "vorcfg STATIC_LINK")
  spdx_package(libstdcxx ${CMAKE_CXX_COMPILER_VERSION} "GPL-3.0-or-later WITH GCC-exception-3.1"
    "Free Software Foundation" "vorcfg STATIC_LINK")
  if(VORCFG_EDITED)
    spdx_package(libedit "" BSD-3-Clause "The NetBSD Foundation" "vorcfg DYNAMIC_LINK")
  endif()
endif()
spdx_package(libvorinfra "" NOASSERTION NOASSERTION ${linked_by})
string(REPLACE "<text>NOASSERTION</text>" NOASSERTION spdx "${spdx}")
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/device_mgmt.spdx CONTENT "${spdx}" @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/device_mgmt.spdx DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
