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

# A program loads the libraries that it calls, and no other that a room below it names.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    add_link_options(LINKER:--as-needed)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # What ccache asks for before it keeps a compilation that uses a precompiled header.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        ${CCACHE_PROGRAM})
endif()

# Precompiled headers: what most files of a kind read anyway, compiled once for each kind of target. They grant nothing
# that a target does not link, but for names of the standard library and of Qt, which Tests/Walls looks after; clang reads
# every file without them, so that each still has to name what it uses.
set(VANTORO_STANDARD_HEADERS <algorithm> <array> <cmath> <cstdint> <functional> <memory> <optional> <string>
    <string_view> <unordered_map> <utility> <vector>)

# vantoro_precompile_for(NAME LIBRARIES HEADERS): the precompiled header that targets of one kind share.
function(vantoro_precompile_for name libraries)
    set(source ${CMAKE_BINARY_DIR}/${name}.cpp)
    if(NOT EXISTS ${source})
        file(WRITE ${source} "")
    endif()
    add_library(${name} OBJECT ${source})
    target_link_libraries(${name} PRIVATE ${libraries} fmt::fmt vantoro_options)
    target_compile_options(${name} PRIVATE -fpch-preprocess)
    target_precompile_headers(${name} PRIVATE ${VANTORO_STANDARD_HEADERS} ${ARGN})
endfunction()

# vantoro_precompile(TARGET KIND): 0 the standard library, 1 Qt's core, 2 its widgets; 3 and more: the same for tests.
function(vantoro_precompile target kind)
    if(TARGET vantoro_precompiled_${kind})
        target_compile_options(${target} PRIVATE -fpch-preprocess)
        target_precompile_headers(${target} REUSE_FROM vantoro_precompiled_${kind})
    endif()
endfunction()

# Once, when the libraries have been found.
macro(vantoro_make_precompiled_headers)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        set(core <QCoreApplication> <QObject> <QPointer> <QString> <QStringList> <QTimer>)
        set(widgets <QApplication> <QKeyEvent> <QMouseEvent> <QPainter> <QPainterPath> <QPointer> <QTimer> <QVBoxLayout>
            <QWidget>)
        vantoro_precompile_for(vantoro_precompiled_0 "" <fmt/format.h>)
        if(VANTORO_QT)
            vantoro_precompile_for(vantoro_precompiled_1 Qt6::Core ${core} <fmt/format.h>)
            vantoro_precompile_for(vantoro_precompiled_2 Qt6::Widgets ${widgets} <fmt/format.h>)
        endif()
        if(VANTORO_TESTS)
            set(tests ${PROJECT_SOURCE_DIR}/Tests/Support/Testing.h)
            vantoro_precompile_for(vantoro_precompiled_3 GTest::gtest ${tests} <fmt/format.h>)
            if(VANTORO_QT)
                vantoro_precompile_for(vantoro_precompiled_4 "Qt6::Core;GTest::gtest" ${core} ${tests})
                vantoro_precompile_for(vantoro_precompiled_5 "Qt6::Widgets;GTest::gtest" ${widgets} ${tests})
            endif()
        endif()
    endif()
endmacro()
