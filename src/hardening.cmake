# What a fault in the library, or a text that it was handed, must not become.
add_library(vor_hardening INTERFACE)
if(VOR_SANITIZE)
  return() # the sanitizers bring their own
endif()

set(stack_protector -fstack-protector-strong)
set(branch_protection "")
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
  set(branch_protection -fcf-protection=full)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(branch_protection -mbranch-protection=standard)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
  # Only functions that hold texts: guarding every local whose address goes out is a sixth more code here.
  set(stack_protector -fstack-protector)
endif()
set(DEVICE_MGMT_STACK_PROTECTOR ${stack_protector} CACHE STRING "The compiler's option that guards the stack")

target_compile_options(vor_hardening INTERFACE ${DEVICE_MGMT_STACK_PROTECTOR} ${branch_protection}
  $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
# Without constructors no start files are needed. Those of some C libraries are not marked for branch
# protection, and one unmarked object takes the mark from all.
target_link_options(vor_hardening INTERFACE -nostartfiles LINKER:-z,relro,-z,now,-z,noexecstack,--build-id=sha1)
