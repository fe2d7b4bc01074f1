# What every target of ours is compiled with. Warnings are errors; third-party headers are system headers. A record's
# members have initialisers, so a designated initialiser may leave some out.
add_library(vantoro_options INTERFACE)
target_compile_options(vantoro_options INTERFACE
    -Wall -Wextra -Wno-missing-field-initializers -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Wold-style-cast
    -Woverloaded-virtual -Werror)

# g++ 12 takes "F" + std::to_string(n) for a copy that overlaps itself once it optimises (its bug 105329), and a string
# that is moved along for one that is longer than where it lies (105562).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(vantoro_options INTERFACE -Wno-restrict)
    if(CMAKE_BUILD_TYPE STREQUAL "Release")
        target_compile_options(vantoro_options INTERFACE -Wno-array-bounds -Wno-stringop-overread
            -Wno-stringop-overflow)
    endif()
endif()

if(VANTORO_SANITIZE)
    add_compile_options(-fsanitize=${VANTORO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${VANTORO_SANITIZE})
    # g++ 12 sees values it calls uninitialised in its own library once the sanitizers rewrite it.
    target_compile_options(vantoro_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # What ccache asks for before it keeps a compilation that uses a precompiled header.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        ${CCACHE_PROGRAM})
endif()

# Precompiled headers: what most files of a kind read anyway. They grant nothing, since what a target does not link is
# not found; the clang build without them shows whether each file still names all it uses.
set(VANTORO_STANDARD_HEADERS <algorithm> <array> <cmath> <cstdint> <functional> <memory> <optional> <string>
    <string_view> <unordered_map> <utility> <vector>)
set(VANTORO_CORE_HEADERS <QCoreApplication> <QObject> <QPointer> <QString> <QStringList> <QTimer>)
set(VANTORO_WIDGET_HEADERS <QApplication> <QKeyEvent> <QMouseEvent> <QPainter> <QPainterPath> <QPointer> <QTimer>
    <QVBoxLayout> <QWidget>)

# vantoro_precompile(TARGET HEADER...): the standard's and these, where the compiler is the one they are measured with.
function(vantoro_precompile target)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${target} PRIVATE -fpch-preprocess)
        target_precompile_headers(${target} PRIVATE ${VANTORO_STANDARD_HEADERS} ${ARGN})
    endif()
endfunction()

# vantoro_precompile_like(TARGET OTHER): with the header that OTHER made.
function(vantoro_precompile_like target other)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${target} PRIVATE -fpch-preprocess)
        target_precompile_headers(${target} REUSE_FROM ${other})
    endif()
endfunction()
