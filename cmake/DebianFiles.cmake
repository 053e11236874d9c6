# Adds the files that Debian requires in every package: changelogs, copyright, compressed manual pages.
cmake_minimum_required(VERSION 3.25)

# SOURCE_DATE_EPOCH, or the current time.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)

function(add_changelog package folder)
    file(WRITE ${folder}/changelog.Debian
        "${package} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium\n\n"
        "  * Release ${CPACK_PACKAGE_VERSION}: see changelog.gz of libtvmeta-dev.\n\n"
        " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
    if(EXISTS ${folder}/CHANGELOG.md)
        file(RENAME ${folder}/CHANGELOG.md ${folder}/changelog)
    endif()
    file(GLOB changelogs ${folder}/changelog*)
    execute_process(COMMAND gzip -9n ${changelogs} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# The tool contains code of header-only libraries, whose licences require their notices.
function(add_copyright component folder)
    string(CONCAT text "tvmeta: image metadata for HDR photo applications\n\n"
        "Copyright 2026 the tvmeta maintainers\n\n"
        "No licence has been granted yet: ask the maintainers before you copy or distribute any of this.\n")
    if(component STREQUAL tool)
        foreach(package IN ITEMS libcli11-dev nlohmann-json3-dev libfmt-dev)
            file(READ /usr/share/doc/${package}/copyright notice)
            string(APPEND text "\n\nThe program contains code of ${package}, with this notice:\n\n")
            string(APPEND text "${notice}")
        endforeach()
    endif()
    file(WRITE ${folder}/copyright ${text})
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} name)
    set(package ${CPACK_DEBIAN_${name}_PACKAGE_NAME})
    set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX})
    set(folder ${root}/share/doc/${package})
    add_changelog(${package} ${folder})
    add_copyright(${component} ${folder})
    file(GLOB pages ${root}/share/man/man*/*.[1-9])
    if(pages)
        execute_process(COMMAND gzip -9n ${pages} COMMAND_ERROR_IS_FATAL ANY)
    endif()
endforeach()
