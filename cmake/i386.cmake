# 32-bit x86 build on an x86-64 host: -m32 with SSE2 arithmetic for all floats
# (-msse2 too: -mfpmath=sse alone leaves code without -msse on x87, with a warning),
# run under qemu-i386 where the host cannot execute 32-bit code itself.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
set(CMAKE_C_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
find_program(QEMU_I386 qemu-i386)
if(QEMU_I386)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${QEMU_I386})
endif()
