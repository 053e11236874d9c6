# 64-bit Windows with Debian's MinGW compiler. Programs run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix) # the one that has std::thread
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine)

# The compiler's own libraries become part of each program and of the DLL, so that no folder must be found at run time.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)

# Three libraries of the tool are headers alone, so Debian's packages for this machine serve Windows, too. Only their
# folders are linked: the other headers there are those of Linux.
set(header_libraries ${CMAKE_BINARY_DIR}/header_libraries)
foreach(folder include/CLI include/nlohmann include/fmt share/cmake/CLI11 share/cmake/nlohmann_json)
    get_filename_component(parent ${header_libraries}/${folder} DIRECTORY)
    file(MAKE_DIRECTORY ${parent})
    file(CREATE_LINK /usr/${folder} ${header_libraries}/${folder} SYMBOLIC)
endforeach()

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${header_libraries})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
