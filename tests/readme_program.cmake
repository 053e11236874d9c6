# Takes the C program out of README.md, so that a test compiles and runs what users copy from there.
file(READ ${PROJECT_SOURCE_DIR}/README.md readme)
string(REGEX MATCH "```c\n([^`]*)```" found "${readme}")
if(NOT found)
    message(FATAL_ERROR "README.md holds no C program")
endif()
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/readme_program.c "${CMAKE_MATCH_1}")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/README.md)

add_executable(readme_program ${CMAKE_CURRENT_BINARY_DIR}/readme_program.c)
target_link_libraries(readme_program PRIVATE tvmeta::tvmeta)
set_target_properties(readme_program PROPERTIES C_STANDARD 99 C_STANDARD_REQUIRED ON C_EXTENSIONS OFF)
target_compile_options(readme_program PRIVATE -Wall -Wextra -Wpedantic -Werror)
