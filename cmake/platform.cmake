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
if(NOT EXISTS "${VORINFRA_LIBRARY}" OR IS_DIRECTORY "${VORINFRA_LIBRARY}")
  message(FATAL_ERROR "VORINFRA_LIBRARY must be a file, libvorinfra.so, not \"${VORINFRA_LIBRARY}\"")
endif()
get_filename_component(vorinfra_library "${VORINFRA_LIBRARY}" ABSOLUTE)
get_filename_component(vorinfra_folder "${vorinfra_library}" DIRECTORY)

# By name, not by path: the library must not contain the path where it was built.
add_library(device_mgmt::vorinfra SHARED IMPORTED GLOBAL)
set(platform_library device_mgmt::vorinfra)
set_target_properties(device_mgmt::vorinfra PROPERTIES IMPORTED_LOCATION "${vorinfra_library}" IMPORTED_NO_SONAME ON)

# Where it is found when programs are linked: beside the library (empty) if its folder, without the sysroot, is where
# the library is installed or a folder of the system.
if(NOT DEFINED VORINFRA_LIBDIR)
  set(VORINFRA_LIBDIR "${vorinfra_folder}")
  set(beside ${CMAKE_INSTALL_FULL_LIBDIR} /usr/lib /lib)
  if(CMAKE_LIBRARY_ARCHITECTURE)
    list(APPEND beside /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE} /lib/${CMAKE_LIBRARY_ARCHITECTURE})
  endif()
  foreach(root IN ITEMS "" ${CMAKE_SYSROOT} ${CMAKE_STAGING_PREFIX} ${CMAKE_FIND_ROOT_PATH})
    foreach(folder IN LISTS beside)
      cmake_path(SET folder NORMALIZE "${root}${folder}")
      if(vorinfra_folder STREQUAL folder)
        set(VORINFRA_LIBDIR "")
      endif()
    endforeach()
  endforeach()
endif()
