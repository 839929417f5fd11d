# Cross build for 64-bit Windows with Debian's mingw-w64 (posix threads, for OpenMP and std::thread).
# The third-party libraries come from the prefix made by scripts/build-windows-deps; pass it as
# DICAPSULE_WIN64_PREFIX. The result is one static dicapsule.exe with no DLL beside it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Windows 10 and later; the static libraries are built with their public API exported as plain
# symbols, not as DLL imports.
set(CMAKE_C_FLAGS_INIT "-D_WIN32_WINNT=0x0A00 -DOPJ_STATIC -DCHARLS_STATIC")
set(CMAKE_CXX_FLAGS_INIT "-D_WIN32_WINNT=0x0A00 -DOPJ_STATIC -DCHARLS_STATIC")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

if(DEFINED ENV{DICAPSULE_WIN64_PREFIX} AND NOT DICAPSULE_WIN64_PREFIX)
  set(DICAPSULE_WIN64_PREFIX $ENV{DICAPSULE_WIN64_PREFIX})
endif()
# try_compile projects re-read this file; hand them the prefix too.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES DICAPSULE_WIN64_PREFIX)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${DICAPSULE_WIN64_PREFIX})
set(CMAKE_PREFIX_PATH ${DICAPSULE_WIN64_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# pkg-config sees only the prefix, and reports the private libraries a static link needs.
set(ENV{PKG_CONFIG_LIBDIR} ${DICAPSULE_WIN64_PREFIX}/lib/pkgconfig:${DICAPSULE_WIN64_PREFIX}/share/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "")
set(PKG_CONFIG_ARGN --static)
# OpenMP from mingw's static libgomp, so that no DLL has to travel with the executable.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libgomp.a
                OUTPUT_VARIABLE _dicapsule_libgomp OUTPUT_STRIP_TRAILING_WHITESPACE)
set(OpenMP_gomp_LIBRARY ${_dicapsule_libgomp} CACHE FILEPATH "mingw's static libgomp")
set(Boost_USE_STATIC_LIBS ON)
set(Boost_USE_STATIC_RUNTIME ON)

# Test programs run under wine, with a wine prefix of their own inside the build folder.
# Arguments and file names cross between Linux and Windows as UTF-8 (wine reads them in the locale).
# libgcc_s is loaded from the start: wine ends the threads still alive at process exit through
# pthread_exit, whose first call loads libgcc_s; done while the main thread runs glibc's exit
# handlers, that load makes the loader abort ("Inconsistency detected by ld.so", status 127) after
# the program has finished, now and then when idle OpenMP workers are still there.
set(CMAKE_CROSSCOMPILING_EMULATOR /usr/bin/env LC_ALL=C.UTF-8 LD_PRELOAD=libgcc_s.so.1
    WINEPREFIX=${CMAKE_BINARY_DIR}/wine WINEDEBUG=-all /usr/lib/wine/wine64)
