# cmake -DMODULE=<file> -DVARIABLE=<name> -DOUTPUT=<header> -P ModuleIdentity.cmake
# Writes a header that holds the file name, size and SHA-256 of a built module, the identity the
# tool checks before it loads the module. The header is rewritten only when its text changes.
file(SIZE "${MODULE}" size)
file(SHA256 "${MODULE}" digest)
get_filename_component(name "${MODULE}" NAME)
set(text "// Written by the build (cmake/ModuleIdentity.cmake) from ${name}; do not edit.
#pragma once
#include \"Portability/Misc/ExternalLibrary.h\"

inline constexpr Portability::ModuleIdentity ${VARIABLE}{\"${name}\", ${size}u, \"${digest}\"};
")
file(WRITE "${OUTPUT}.new" "${text}")
configure_file("${OUTPUT}.new" "${OUTPUT}" COPYONLY)
file(REMOVE "${OUTPUT}.new")
