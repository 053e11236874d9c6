# Debian packages, one per component. scripts/package builds them from the preset "package".
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package sets its own
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
# .invalid is reserved (RFC 2606). To distribute packages, set your own address.
if(NOT CPACK_PACKAGE_CONTACT)
    set(CPACK_PACKAGE_CONTACT "tvmeta maintainers <maintainers@tvmeta.invalid>")
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libtvmeta${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "image metadata for HDR photo applications - library
Reads the metadata of source photographs (JPEG, TIFF, PSD) into one record,
keeps processing settings as an XMP packet, writes result images as TIFF files
with that metadata, and measures the luminance of HDR buffers.")
# shlibs: the package that linked programs depend on. triggers: update the cache of the loader.
set(control ${PROJECT_BINARY_DIR}/debian-control)
file(WRITE ${control}/shlibs
    "libtvmeta ${PROJECT_VERSION_MAJOR} ${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} (>= ${PROJECT_VERSION})\n")
file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${control}/shlibs ${control}/triggers)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtvmeta-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "image metadata for HDR photo applications - development files
Files for building programs with libtvmeta: the header, a pkg-config file, a
CMake package and the documentation.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME tvmeta)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}) # the library that the tool uses
set(CPACK_DEBIAN_TOOL_DESCRIPTION "image metadata for HDR photo applications - command-line tool
Shows the metadata of photographs, writes TIFF files with metadata and
processing settings, and works on EXIF blocks, ICC profiles, IPTC keywords and
settings packets.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-tvmeta)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), python3:any")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-distributed, python3-numpy, python3-pandas, tvmeta")
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "image metadata for HDR photo applications - Python interface
Reads photographs into Python values, writes TIFF files from numpy arrays,
keeps settings as mappings, and indexes archives of photographs on a Dask
cluster.")
# The modules are compiled where they are installed.
file(CONFIGURE OUTPUT ${control}/postinst CONTENT "#!/bin/sh\nset -e\npy3compile -p python3-tvmeta\n")
file(CONFIGURE OUTPUT ${control}/prerm CONTENT "#!/bin/sh\nset -e\npy3clean -p python3-tvmeta\n")
file(CHMOD ${control}/postinst ${control}/prerm
    PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${control}/postinst ${control}/prerm)

# Runs after the files are staged, before the packages are built.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/DebianFiles.cmake)

include(CPack)
cpack_add_component(library)
cpack_add_component(development DEPENDS library)
if(TARGET tvmeta_tool)
    cpack_add_component(tool DEPENDS library)
endif()
if(TVMETA_INSTALL_PYTHON)
    cpack_add_component(python DEPENDS library)
endif()
