# fmt from its headers alone: this machine's library is not the Mac's.
add_library(fmt::fmt INTERFACE IMPORTED)
target_include_directories(fmt::fmt INTERFACE ${VANTORO_MAC_HEADERS})
target_compile_definitions(fmt::fmt INTERFACE FMT_HEADER_ONLY)
