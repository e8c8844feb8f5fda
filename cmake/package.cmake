# The Debian packages: one for each component. Meant for the preset "package", whose prefix is "/".
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL devmgr virtual)
set(CPACK_PACKAGE_CONTACT "devmgr maintainers <maintainers@example.invalid>")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The platform's libraries belong to no package: they are found here, and give no dependency.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/platform)
if(CMAKE_CROSSCOMPILING AND CMAKE_SYSTEM_PROCESSOR STREQUAL aarch64)
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
endif()

set(CPACK_DEBIAN_DEVMGR_PACKAGE_NAME devmgr)
set(CPACK_DEBIAN_DEVMGR_PACKAGE_DEPENDS "adduser, init-system-helpers")
# Not recommended: what is recommended is installed along, and a virtual switch would start on every real one.
set(CPACK_DEBIAN_DEVMGR_PACKAGE_SUGGESTS devmgr-virtual)
set(CPACK_COMPONENT_DEVMGR_DESCRIPTION "keeps the REST cache of a managed AV switch filled and fresh
A daemon that asks the switch through the platform's client library and through
show commands, and writes one JSON document per API name into an SQLite file.
The platform's libopenclt.so and libproc_libs.so are not part of this package.")
set(CPACK_DEBIAN_VIRTUAL_PACKAGE_NAME devmgr-virtual)
set(CPACK_DEBIAN_VIRTUAL_PACKAGE_DEPENDS "devmgr (= ${PROJECT_VERSION}), adduser, python3, ieee-data, init-system-helpers")
set(CPACK_COMPONENT_VIRTUAL_DESCRIPTION "virtual switch for devmgr
Libraries that answer devmgr from a scenario file in the place of a switch, the
shipped scenarios, tools, and a service that runs devmgr on them.")

foreach(component devmgr virtual)
    string(TOUPPER ${component} upper)
    set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    set(unit ${package}.service)
    set(scripts)
    foreach(script postinst prerm postrm)
        configure_file(${CMAKE_SOURCE_DIR}/packaging/${script}.in ${CMAKE_BINARY_DIR}/packaging/${component}/${script}
            @ONLY FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
        list(APPEND scripts ${CMAKE_BINARY_DIR}/packaging/${component}/${script})
    endforeach()
    file(WRITE ${CMAKE_BINARY_DIR}/packaging/${component}/conffiles "${DEVMGR_DEFAULTS}/${package}\n")
    set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA ${scripts} ${CMAKE_BINARY_DIR}/packaging/${component}/conffiles)
endforeach()
include(CPack)
