# Limits the damage of a bug in the library or of malicious input.
add_library(vor_hardening INTERFACE)
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
# Without constructors no start files are needed. Those of some C libraries are not marked for branch
# protection, and a single unmarked object disables it for the whole library.
target_link_options(vor_hardening INTERFACE -nostartfiles LINKER:-z,relro,-z,now,-z,noexecstack,--build-id=sha1)
