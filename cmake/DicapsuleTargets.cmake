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
# GCC 12 at -O3 (the Release type) reports -Wrestrict on std::string code that libstdc++ inlines,
# such as "<" + name: false positives of that compiler, so the check is left to the others.
function(dicapsule_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Werror)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
endfunction()

# dicapsule_headers(FOLDER OUT_VAR): the headers of the library in FOLDER, without those of the
# libraries nested below it (a subfolder with a CMakeLists.txt of its own is another library).
function(dicapsule_headers folder out_var)
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS ${folder}/*.h ${folder}/*.hpp ${folder}/*.inc)
  file(GLOB_RECURSE nested CONFIGURE_DEPENDS ${folder}/*/CMakeLists.txt)
  foreach(list_file ${nested})
    get_filename_component(nested_folder ${list_file} DIRECTORY)
    list(FILTER headers EXCLUDE REGEX "^${nested_folder}/")
  endforeach()
  set(${out_var} ${headers} PARENT_SCOPE)
endfunction()

# dicapsule_library(NAME SOURCES... [PUBLIC_DEPS ...] [PRIVATE_DEPS ...])
# One static library per source folder. Its public include folder is a tree of its own under the
# build folder that holds links to its headers only, at their paths from the repository root; a
# library reaches the headers of the libraries it links and no others, so an include that points
# up the layers fails to compile in the lower library itself.
function(dicapsule_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC_DEPS;PRIVATE_DEPS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  set(include_root ${PROJECT_BINARY_DIR}/include/${name})
  file(REMOVE_RECURSE ${include_root})
  dicapsule_headers(${CMAKE_CURRENT_SOURCE_DIR} headers)
  foreach(header ${headers})
    file(RELATIVE_PATH relative ${PROJECT_SOURCE_DIR} ${header})
    get_filename_component(link_folder ${include_root}/${relative} DIRECTORY)
    file(MAKE_DIRECTORY ${link_folder})
    file(CREATE_LINK ${header} ${include_root}/${relative} SYMBOLIC)
  endforeach()
  file(MAKE_DIRECTORY ${include_root})
  target_include_directories(${name} PUBLIC ${include_root})
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC_DEPS} PRIVATE ${ARG_PRIVATE_DEPS})
  dicapsule_warnings(${name})
endfunction()

# dicapsule_module(NAME SOURCES...): a module loaded at run time, installed in lib/dicapsule/.
# Its debug information goes to NAME.so.debug beside it and the module itself is stripped as the
# Debian package wants it, so that the bytes built are the bytes installed: the tool checks the
# module's size and SHA-256 (dicapsule_module_identity) before loading it.
function(dicapsule_module name)
  add_library(${name} MODULE ${ARGN})
  set_target_properties(${name} PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}
                        CXX_VISIBILITY_PRESET hidden BUILD_WITH_INSTALL_RPATH ON DICAPSULE_SHARED_CRYPTO ON)
  dicapsule_warnings(${name})
  add_custom_command(TARGET ${name} POST_BUILD
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug $<TARGET_FILE:${name}> $<TARGET_FILE:${name}>.debug
    COMMAND ${CMAKE_STRIP} --strip-unneeded --remove-section=.comment --remove-section=.note $<TARGET_FILE:${name}>
    COMMAND ${CMAKE_OBJCOPY} --add-gnu-debuglink=$<TARGET_FILE:${name}>.debug $<TARGET_FILE:${name}>
    VERBATIM)
  set_property(GLOBAL APPEND PROPERTY DICAPSULE_MODULES ${name})
endfunction()

# dicapsule_module_identity(MODULE CONSUMER VARIABLE): CONSUMER's sources may include
# "<MODULE>Identity.h", which defines the Portability::ModuleIdentity VARIABLE of the module as
# built. The header is made again whenever the module is linked again.
function(dicapsule_module_identity module consumer variable)
  set(folder ${PROJECT_BINARY_DIR}/generated/${consumer})
  set(header ${folder}/${module}Identity.h)
  add_custom_command(OUTPUT ${header}
    COMMAND ${CMAKE_COMMAND} -DMODULE=$<TARGET_FILE:${module}> -DVARIABLE=${variable} -DOUTPUT=${header}
            -P ${PROJECT_SOURCE_DIR}/cmake/ModuleIdentity.cmake
    DEPENDS ${module} ${PROJECT_SOURCE_DIR}/cmake/ModuleIdentity.cmake
    COMMENT "Recording the identity of ${module}"
    VERBATIM)
  target_sources(${consumer} PRIVATE ${header})
  target_include_directories(${consumer} PRIVATE ${folder})
endfunction()

# Fuzzing builds (clang): every object gets coverage instrumentation and the sanitizers.
if(DICAPSULE_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
