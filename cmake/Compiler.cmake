# What every target of ours is compiled with. Warnings are errors; third-party headers are system headers. A record's
# members have initialisers, so a designated initialiser may leave some out.
add_library(vantoro_options INTERFACE)
target_compile_options(vantoro_options INTERFACE
    -Wall -Wextra -Wno-missing-field-initializers -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Wold-style-cast
    -Woverloaded-virtual -Werror)

# g++ 12 takes "F" + std::to_string(n) for a copy that overlaps itself once it optimises (its bug 105329).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(vantoro_options INTERFACE -Wno-restrict)
endif()

if(VANTORO_SANITIZE)
    add_compile_options(-fsanitize=${VANTORO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${VANTORO_SANITIZE})
    # g++ 12 sees values it calls uninitialised in its own library once the sanitizers rewrite it.
    target_compile_options(vantoro_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()
