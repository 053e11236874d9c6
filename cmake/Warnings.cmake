# Warnings are errors in builds of this project only: a new compiler must not break projects that include it.
option(TVMETA_WERROR "Treat warnings as errors" ${PROJECT_IS_TOP_LEVEL})

function(tvmeta_enable_warnings target)
    if(MSVC) # and clang-cl, to which -Wall means every warning there is. Neither was tested, so none is an error
        target_compile_options(${target} PRIVATE /W4)
        return()
    endif()
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(TVMETA_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
