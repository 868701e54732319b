# Debian packages of what is installed: cpack --config build/release/CPackConfig.cmake
# With CMAKE_INSTALL_PREFIX=/usr the library goes where Debian puts those of the machine's architecture.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR Bryx)
if(NOT CPACK_PACKAGE_CONTACT)
    set(CPACK_PACKAGE_CONTACT "Bryx MXF SDK maintainers") # whoever publishes packages gives an address here
endif()
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(package_version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")

set(runtime_package libbryxmxf${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "Bryx MXF SDK (shared library)
This library reads and writes files of the Material Exchange Format (SMPTE ST 377-1). Programs that are linked with it \
need this package.")
# Programs packaged later learn from this on which package they depend. New versions add to what is exported.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
find_program(DPKG_SHLIBDEPS dpkg-shlibdeps)
mark_as_advanced(DPKG_SHLIBDEPS)
if(DPKG_SHLIBDEPS)
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
endif()

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libbryxmxf-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime_package} (= ${package_version}), libboost-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "Bryx MXF SDK (development files)
This library reads and writes files of the Material Exchange Format (SMPTE ST 377-1). This package holds what it takes to \
build programs with it: headers, a CMake package and a pkg-config file.")

include(CPack)
