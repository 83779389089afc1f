# What users get: a Debian package from a native build, a zip from one for Windows.

# The version that users see has one place.
file(STRINGS ${CMAKE_SOURCE_DIR}/data/Project.xml DRUMFELL_VERSION REGEX "app-version=")
string(REGEX REPLACE ".*app-version=\"([^\"]+)\".*" "\\1" DRUMFELL_VERSION "${DRUMFELL_VERSION}")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/data/Project.xml)

set(texts ${CMAKE_SOURCE_DIR}/Docs/package)
set(made ${CMAKE_BINARY_DIR}/package)
file(MAKE_DIRECTORY ${made})

set(CPACK_PACKAGE_NAME drumfell)
set(CPACK_PACKAGE_VERSION ${DRUMFELL_VERSION})
set(CPACK_PACKAGE_CONTACT "Drumfell developers <developers@drumfell.example>") # of a domain that is nobody's
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "audio effect for drums and bass, with an offline renderer")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR})
set(CPACK_STRIP_FILES ON)

if(WIN32)
    configure_file(${texts}/windows.txt.in ${made}/Readme.txt NEWLINE_STYLE DOS)
    configure_file(${texts}/copyright ${made}/Copyright.txt NEWLINE_STYLE DOS)
    install(TARGETS Drumfell LIBRARY DESTINATION .)
    if(TARGET drumfell-render)
        install(TARGETS drumfell-render RUNTIME DESTINATION .)
    endif()
    install(FILES ${made}/Readme.txt ${made}/Copyright.txt DESTINATION .)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME Drumfell-${DRUMFELL_VERSION}-windows)
else()
    # install_compressed(NAME FOLDER): without the time of the build, so that equal texts are equal files.
    function(install_compressed name folder)
        configure_file(${texts}/${name}.in ${made}/${name} @ONLY)
        execute_process(COMMAND gzip -9 --no-name --force ${made}/${name} COMMAND_ERROR_IS_FATAL ANY)
        install(FILES ${made}/${name}.gz DESTINATION ${folder})
    endfunction()

    install(TARGETS Drumfell LIBRARY DESTINATION lib/vst)
    install(TARGETS drumfell-render drumfell-inspect RUNTIME DESTINATION bin)
    foreach(tool drumfell-render drumfell-inspect)
        install_compressed(${tool}.1 share/man/man1)
    endforeach()
    install_compressed(changelog share/doc/drumfell)
    install(FILES ${texts}/copyright DESTINATION share/doc/drumfell)
    set(CPACK_GENERATOR DEB)
    set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_PACKAGE_SECTION sound)
    set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "A VST 2.4 effect that gives low frequencies punch, harmonics and
sub-harmonic weight; drumfell-render, which sends audio files through it
without a host; and drumfell-inspect, which prints its presets.")
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    # Found at run time, so that the effect loads and renders where there is no desktop.
    set(desktop_packages libxcb1 libxcb-shm0 libxcb-randr0 libxcb-xkb1 libxcb-cursor0 libxkbcommon0 libxkbcommon-x11-0
        libdbus-1-3)
    list(JOIN desktop_packages ", " CPACK_DEBIAN_PACKAGE_RECOMMENDS)
    set(CPACK_DEBIAN_PACKAGE_SUGGESTS "zenity | kdialog")
endif()
include(CPack)
