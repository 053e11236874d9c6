# What a user of the installed library needs: the header, the library, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

set(TVMETA_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tvmeta)

install(TARGETS tvmeta EXPORT tvmeta
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES include/tvmeta.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT tvmeta NAMESPACE tvmeta:: FILE tvmeta-config.cmake DESTINATION ${TVMETA_PACKAGE_DIR})

write_basic_package_version_file(tvmeta-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tvmeta-config-version.cmake DESTINATION ${TVMETA_PACKAGE_DIR})

# A static library brings the C++ runtime along, which a C program must link by itself.
if(NOT BUILD_SHARED_LIBS)
    set(TVMETA_PC_CFLAGS "-DTVMETA_STATIC")
    set(TVMETA_PC_LIBS "-lstdc++ -lm")
endif()
# Relative to where the file lies, so that an installation can be moved or made with another prefix.
file(RELATIVE_PATH TVMETA_PC_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/tvmeta.pc.in tvmeta.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tvmeta.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
