# Warnings are errors in this project's own builds; somebody else's compiler must not fail on its own new warnings.
option(TVMETA_WERROR "Treat warnings as errors" ${PROJECT_IS_TOP_LEVEL})

function(tvmeta_enable_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(TVMETA_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
