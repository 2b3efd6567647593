# How the library and the tools are built: reproducibly from any folder, with ninja and make, and so as to limit the
# damage of a bug or of malicious input.
add_library(vor_hardening INTERFACE)
target_compile_options(vor_hardening INTERFACE
  "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build"
  "-ffile-prefix-map=${CMAKE_BINARY_DIR}=build"
  "-ffile-prefix-map=$<TARGET_PROPERTY:BINARY_DIR>=build")
if(VOR_SANITIZE)
  return() # the sanitizers have their own
endif()

set(stack_protector -fstack-protector-strong)
set(branch_protection "")
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
  set(branch_protection -fcf-protection=full)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(branch_protection -mbranch-protection=standard)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
  # Only functions with character arrays: protecting every local whose address is passed on adds a sixth of the code.
  set(stack_protector -fstack-protector)
endif()
set(DEVICE_MGMT_STACK_PROTECTOR ${stack_protector} CACHE STRING "The compiler option for stack protection")

target_compile_options(vor_hardening INTERFACE ${DEVICE_MGMT_STACK_PROTECTOR} ${branch_protection}
  $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
target_link_options(vor_hardening INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack,--build-id=sha1)
