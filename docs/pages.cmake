# Tries what the pages show: behind the line SHOWN a page must hold what a command prints, word for word, up to the end
# of the block or a blank line.
#
#   cmake -DPAGE=FILE -DSHOWN=TEXT "-DCOMMAND=PROGRAM;ARGUMENT..." -P pages.cmake
if(CMAKE_SCRIPT_MODE_FILE)
    execute_process(COMMAND ${COMMAND} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    file(READ ${PAGE} page)
    string(FIND "${page}" "${SHOWN}\n${output}```" block)
    string(FIND "${page}" "${SHOWN}\n${output}\n" paragraph)
    if(output STREQUAL "" OR (block EQUAL -1 AND paragraph EQUAL -1))
        message(FATAL_ERROR "${PAGE} does not show what this prints: ${COMMAND}\n${output}")
    endif()
    return()
endif()

set(page_folder ${CMAKE_CURRENT_BINARY_DIR}/pages) # where the programs run, with the examples at hand
file(MAKE_DIRECTORY ${page_folder})
file(CREATE_LINK ${PROJECT_SOURCE_DIR}/examples ${page_folder}/examples SYMBOLIC)

# tvmeta_test_page(NAME PAGE SHOWN COMMAND...)
function(tvmeta_test_page name page shown)
    add_test(NAME page_${name} WORKING_DIRECTORY ${page_folder} COMMAND ${CMAKE_COMMAND}
        -DPAGE=${PROJECT_SOURCE_DIR}/${page} "-DSHOWN=${shown}" "-DCOMMAND=${ARGN}"
        -P ${PROJECT_SOURCE_DIR}/docs/pages.cmake)
endfunction()

# Builds the C program of a page, for a test that runs it as the page says: "... && ./program argument...".
function(tvmeta_test_page_program page)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${page})
    file(READ ${PROJECT_SOURCE_DIR}/${page} text)
    if(NOT text MATCHES "```c\n([^`]*)```")
        message(FATAL_ERROR "${page} holds no C program")
    endif()
    cmake_path(GET page STEM name)
    file(WRITE ${page_folder}/${name}.c "${CMAKE_MATCH_1}")
    add_executable(page_${name} ${page_folder}/${name}.c)
    target_link_libraries(page_${name} PRIVATE tvmeta::tvmeta)
    set_target_properties(page_${name} PROPERTIES C_STANDARD 99 C_STANDARD_REQUIRED ON C_EXTENSIONS OFF)
    target_compile_options(page_${name} PRIVATE -Wall -Wextra -Wpedantic -Werror)
    if(NOT text MATCHES "\n[$] cc [^\n]*(&& \\./[a-z]+ ([^\n]*))\n")
        message(FATAL_ERROR "${page} does not run its program")
    endif()
    separate_arguments(arguments UNIX_COMMAND "${CMAKE_MATCH_2}")
    tvmeta_test_page(${name} ${page} "${CMAKE_MATCH_1}" $<TARGET_FILE:page_${name}> ${arguments})
endfunction()

foreach(page README.md docs/read-a-photograph.md docs/save-a-result.md docs/keep-settings.md docs/patch-a-file.md)
    tvmeta_test_page_program(${page})
endforeach()
tvmeta_test_page(result_codes docs/result-codes.md "|---|---|---|"
    awk -f ${PROJECT_SOURCE_DIR}/docs/result-codes.awk ${PROJECT_SOURCE_DIR}/include/tvmeta.h)

add_executable(packet_tables ${PROJECT_SOURCE_DIR}/docs/packet_tables.cpp)
target_sources(packet_tables PRIVATE $<TARGET_OBJECTS:tvmeta>)
target_include_directories(packet_tables PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
target_compile_features(packet_tables PRIVATE cxx_std_20)
tvmeta_enable_warnings(packet_tables)
tvmeta_test_page(packet docs/packet-format.md "```xml" $<TARGET_FILE:packet_tables>)
tvmeta_test_page(methods docs/packet-format.md "## Methods" $<TARGET_FILE:packet_tables> methods
    ${PROJECT_SOURCE_DIR}/include/tvmeta.h)

# What the tool prints; its paths begin in the folder of the pages, too.
function(tvmeta_test_page_session name page command)
    separate_arguments(arguments UNIX_COMMAND "${command}")
    tvmeta_test_page(${name} ${page} "$ tvmeta ${command}" $<TARGET_FILE:tvmeta_tool> ${arguments})
endfunction()
if(TVMETA_BUILD_TOOL)
    tvmeta_test_page_session(brackets docs/sort-brackets.md "brackets -r examples/brackets")
    tvmeta_test_page_session(report docs/sort-brackets.md "report -r examples/brackets -o report.html")
endif()
