# What is installed, in two components: "devmgr" goes on a switch, "virtual" adds the virtual switch beside it.
include(GNUInstallDirs)
set(DEVMGR_VIRTUAL_DIR ${CMAKE_INSTALL_FULL_LIBEXECDIR}/devmgr)
set(DEVMGR_SCENARIO_DIR ${CMAKE_INSTALL_FULL_DATADIR}/devmgr/scenarios)
set(DEVMGR_DEFAULTS ${CMAKE_INSTALL_FULL_SYSCONFDIR}/default)
set(units lib/systemd/system) # below any prefix: systemd looks into /lib, /usr/lib and /usr/local/lib
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME devmgr)
set(packaging ${CMAKE_SOURCE_DIR}/packaging)
set(made ${CMAKE_BINARY_DIR}/packaging)
foreach(file devmgr.service devmgr-virtual.service run-virtual)
    configure_file(${packaging}/${file}.in ${made}/${file} @ONLY)
endforeach()

function(devmgr_man_page page target component) # a source or a made one; built with TARGET, which is what packages build
    get_filename_component(name ${page} NAME)
    add_custom_command(OUTPUT ${made}/${name}.gz DEPENDS ${page} COMMAND gzip -9nc ${page} > ${made}/${name}.gz VERBATIM)
    add_custom_target(man_page_${name} ALL DEPENDS ${made}/${name}.gz)
    add_dependencies(${target} man_page_${name})
    string(REGEX MATCH "[0-9]$" section ${name})
    install(FILES ${made}/${name}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
endfunction()

devmgr_man_page(${CMAKE_SOURCE_DIR}/docs/devmgr.8 devmgr devmgr)

# The search path of a program in the build tree is that of its platform library, in the installed tree this one. CMake's
# own change from the one to the other would leave an empty element in the former, which means the current folder.
function(devmgr_installed_rpath target folder component) # RPATH, none for the loader's own folders
    set_target_properties(${target} PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH $<TARGET_FILE_DIR:openclt>)
    set(file "FILE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}/${target}\"")
    if(ARGN)
        install(CODE "file(RPATH_SET ${file} NEW_RPATH \"${ARGN}\")" COMPONENT ${component})
    else()
        install(CODE "file(RPATH_REMOVE ${file})" COMPONENT ${component})
    endif()
endfunction()

install(TARGETS devmgr devmgrctl COMPONENT devmgr)
devmgr_man_page(${CMAKE_SOURCE_DIR}/docs/devmgrctl.1 devmgrctl devmgr)
install(FILES ${packaging}/devmgrctl.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME devmgrctl COMPONENT devmgr)
devmgr_installed_rpath(devmgr ${CMAKE_INSTALL_BINDIR} devmgr)
install(FILES ${made}/devmgr.service DESTINATION ${units} COMPONENT devmgr)
install(FILES ${packaging}/devmgr.default DESTINATION ${CMAKE_INSTALL_SYSCONFDIR}/default RENAME devmgr COMPONENT devmgr)
install(FILES README.md CHANGELOG.md docs/architecture.md docs/consuming.md docs/documents.md docs/porting.md
    docs/troubleshooting.md docs/status.md docs/status.schema.json
    DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT devmgr)
install(DIRECTORY docs/schemas DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT devmgr)

if(TARGET vswitch)
    set(virtual_dir ${CMAKE_INSTALL_LIBEXECDIR}/devmgr)
    install(TARGETS openclt proc_libs vswitch follow writeback docnames COMPONENT virtual
        RUNTIME DESTINATION ${virtual_dir} LIBRARY DESTINATION ${virtual_dir})
    foreach(tool vswitch writeback docnames)
        devmgr_installed_rpath(${tool} ${virtual_dir} virtual "\\$ORIGIN")
    endforeach()
    install(PROGRAMS tools/seed.py ${made}/run-virtual DESTINATION ${virtual_dir} COMPONENT virtual)
    install(DIRECTORY platform/virtual/scenarios DESTINATION ${CMAKE_INSTALL_DATADIR}/devmgr COMPONENT virtual)
    install(FILES ${made}/devmgr-virtual.service DESTINATION ${units} COMPONENT virtual)
    install(FILES ${packaging}/devmgr-virtual.default DESTINATION ${CMAKE_INSTALL_SYSCONFDIR}/default
        RENAME devmgr-virtual COMPONENT virtual)
    install(FILES docs/scenarios.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT virtual)
    add_custom_command(OUTPUT ${made}/devmgr-scenario.5 VERBATIM
        DEPENDS ${CMAKE_SOURCE_DIR}/docs/scenarios.md ${CMAKE_SOURCE_DIR}/tools/scenarios_man.py
        COMMAND /usr/bin/python3 -B ${CMAKE_SOURCE_DIR}/tools/scenarios_man.py ${PROJECT_VERSION}
            ${CMAKE_SOURCE_DIR}/docs/scenarios.md > ${made}/devmgr-scenario.5)
    devmgr_man_page(${made}/devmgr-scenario.5 vswitch virtual)
    devmgr_man_page(${CMAKE_SOURCE_DIR}/docs/vswitch.1 vswitch virtual)
endif()
