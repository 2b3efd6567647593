# libvorinfra, as the target device_mgmt::vorinfra: the stand-in for development machines, or the gateway's own.
if(VOR_DEVELOPMENT)
  add_subdirectory(platform)
  add_library(device_mgmt::vorinfra ALIAS vorinfra)
  set(platform_library $<TARGET_LINKER_FILE:vorinfra>) # the file, because the installed package has no such target
  set(VORINFRA_LIBDIR "")
  return()
endif()

find_library(VORINFRA_LIBRARY vorinfra DOC "The gateway's platform library, libvorinfra.so")
if(NOT VORINFRA_LIBRARY)
  message(FATAL_ERROR "libvorinfra.so, the gateway's platform library, was not found; "
    "name it with -DVORINFRA_LIBRARY=/path/to/libvorinfra.so or its tree with -DCMAKE_PREFIX_PATH=..., "
    "or build for a development machine with -DVOR_DEVELOPMENT=ON, which includes a stand-in")
endif()
get_filename_component(vorinfra_library "${VORINFRA_LIBRARY}" ABSOLUTE)
get_filename_component(vorinfra_folder "${vorinfra_library}" DIRECTORY)

# By name, not by path: the library must not contain the path where it was built.
add_library(device_mgmt::vorinfra SHARED IMPORTED GLOBAL)
set(platform_library device_mgmt::vorinfra)
set_target_properties(device_mgmt::vorinfra PROPERTIES IMPORTED_LOCATION "${vorinfra_library}" IMPORTED_NO_SONAME ON)

# Where it is found when programs are linked: beside the library (empty) if its
# folder ends like the library's own, also in an image or a sysroot.
set(beside "")
foreach(folder IN ITEMS ${CMAKE_INSTALL_FULL_LIBDIR} /usr/lib /lib
    /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE} /lib/${CMAKE_LIBRARY_ARCHITECTURE})
  if("${vorinfra_folder}/" MATCHES "${folder}/+$")
    set(beside ON)
  endif()
endforeach()
if(beside)
  set(vorinfra_folder "")
endif()
set(VORINFRA_LIBDIR "${vorinfra_folder}" CACHE STRING
  "Folder of libvorinfra when front ends are linked; empty: beside libdevice_mgmt")
