# Compares the documentation with the output of its programs, the header and the packets of the library.
set(page_folder ${CMAKE_CURRENT_BINARY_DIR}/pages) # where the programs run; contains the examples
set(page_script ${CMAKE_CURRENT_LIST_DIR}/pages.py)
file(MAKE_DIRECTORY ${page_folder})
file(CREATE_LINK ${PROJECT_SOURCE_DIR}/examples ${page_folder}/examples SYMBOLIC)

function(tvmeta_test_page name)
    add_test(NAME page_${name} WORKING_DIRECTORY ${page_folder} COMMAND ${Python3_EXECUTABLE} ${page_script} ${ARGN})
endfunction()

foreach(page README docs/read-a-photograph docs/save-a-result docs/keep-settings docs/patch-a-file)
    cmake_path(GET page FILENAME name)
    set(page ${PROJECT_SOURCE_DIR}/${page}.md)
    add_custom_command(OUTPUT pages/${name}.c DEPENDS ${page} ${page_script}
        COMMAND ${Python3_EXECUTABLE} ${page_script} program ${page} >pages/${name}.c)
    add_executable(page_${name} ${page_folder}/${name}.c)
    target_link_libraries(page_${name} PRIVATE tvmeta::tvmeta)
    set_target_properties(page_${name} PROPERTIES C_STANDARD 99 C_STANDARD_REQUIRED ON C_EXTENSIONS OFF)
    target_compile_options(page_${name} PRIVATE -Wall -Wextra -Wpedantic -Werror)
    tvmeta_test_page(${name} run ${page} ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:page_${name}>)
endforeach()
tvmeta_test_page(result_codes check ${PROJECT_SOURCE_DIR}/docs/result-codes.md "|---|---|---|"
    ${Python3_EXECUTABLE} ${page_script} codes ${PROJECT_SOURCE_DIR}/include/tvmeta.h)

add_executable(packet_tables ${CMAKE_CURRENT_LIST_DIR}/packet_tables.cpp)
target_sources(packet_tables PRIVATE $<TARGET_OBJECTS:tvmeta>)
target_compile_definitions(packet_tables PRIVATE TVMETA_STATIC)
target_include_directories(packet_tables PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
target_compile_features(packet_tables PRIVATE cxx_std_20)
tvmeta_enable_warnings(packet_tables)
set(packet_tables ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:packet_tables>)
tvmeta_test_page(packet check ${PROJECT_SOURCE_DIR}/docs/packet-format.md "```xml" ${packet_tables})
tvmeta_test_page(methods check ${PROJECT_SOURCE_DIR}/docs/packet-format.md "## Methods" ${packet_tables} methods
    ${PROJECT_SOURCE_DIR}/include/tvmeta.h)

# The output of a tool command that a page shows. Paths are relative to the folder of the pages.
function(tvmeta_test_page_session name page command)
    separate_arguments(arguments UNIX_COMMAND "${command}")
    tvmeta_test_page(${name} check ${PROJECT_SOURCE_DIR}/${page} "$ tvmeta ${command}" ${CMAKE_CROSSCOMPILING_EMULATOR}
        $<TARGET_FILE:tvmeta_tool> ${arguments})
endfunction()
if(TARGET tvmeta_tool)
    tvmeta_test_page_session(brackets docs/sort-brackets.md "brackets -r examples/brackets")
    tvmeta_test_page_session(stats docs/measure-light.md "stats examples/scene.hdr --histogram")
    tvmeta_test_page_session(report docs/sort-brackets.md "report -r examples/brackets -o report.html")
endif()
