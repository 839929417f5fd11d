# Shared settings for the project's own targets: strict warnings, optional sanitizers.

if(DICAPSULE_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

# Windows builds: wide Win32 calls, no min/max macros, 64-bit file offsets in the C runtime, and
# mingw's C99 printf family (%zu, %lld) instead of the system C runtime's.
if(WIN32)
  add_compile_definitions(UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _FILE_OFFSET_BITS=64
                          __USE_MINGW_ANSI_STDIO=1)
endif()

# Warnings are errors in our own code; third-party headers come in as SYSTEM includes.
function(dicapsule_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Werror)
endfunction()

# dicapsule_library(NAME SOURCES... [PUBLIC_DEPS ...] [PRIVATE_DEPS ...])
# One static library per source folder; the folder's parent of Foundations etc. is the include root.
function(dicapsule_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC_DEPS;PRIVATE_DEPS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC_DEPS} PRIVATE ${ARG_PRIVATE_DEPS})
  dicapsule_warnings(${name})
endfunction()

# Fuzzing builds (clang): every object gets coverage instrumentation and the sanitizers.
if(DICAPSULE_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
