# Installs three components: the library, the development files, and (in tools/) the tool. Off by default inside another
# project, which decides what it installs.
option(TVMETA_INSTALL "Install the library" ${PROJECT_IS_TOP_LEVEL})
if(NOT TVMETA_INSTALL)
    return()
endif()

include(CMakePackageConfigHelpers)

set(TVMETA_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tvmeta)

install(TARGETS tvmeta EXPORT tvmeta
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
install(FILES include/tvmeta.h include/tvmeta_photo.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT tvmeta NAMESPACE tvmeta:: FILE tvmeta-config.cmake DESTINATION ${TVMETA_PACKAGE_DIR}
    COMPONENT development)

write_basic_package_version_file(tvmeta-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tvmeta-config-version.cmake DESTINATION ${TVMETA_PACKAGE_DIR}
    COMPONENT development)

# A static library brings the C++ runtime along, which a C program must link by itself.
if(NOT BUILD_SHARED_LIBS)
    set(TVMETA_PC_CFLAGS "-DTVMETA_STATIC")
    set(TVMETA_PC_LIBS "")
    foreach(library IN ITEMS stdc++ c++ m)
        if(library IN_LIST CMAKE_CXX_IMPLICIT_LINK_LIBRARIES)
            string(APPEND TVMETA_PC_LIBS " -l${library}")
        endif()
    endforeach()
endif()
# Relative to the file itself, so that an installation can be moved.
file(RELATIVE_PATH TVMETA_PC_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/tvmeta.pc.in tvmeta.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tvmeta.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)

# The pages keep their relative paths, so that the links between them work.
if(PROJECT_IS_TOP_LEVEL)
    file(GLOB TVMETA_PAGES CONFIGURE_DEPENDS docs/*.md)
    install(FILES README.md SECURITY.md CONTRIBUTING.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR}
        COMPONENT development)
    install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development USE_SOURCE_PERMISSIONS)
    install(FILES ${TVMETA_PAGES} DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT development)
    install(DIRECTORY docs/images DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT development)
endif()
