# The two Debian packages, "corvane-cli" and "corvane": one install component each. Included before
# the folders are added: what they install belongs to corvane-cli unless they say otherwise.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME corvane-cli)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME corvane)
set(CPACK_PACKAGE_VENDOR "Corvane developers")
set(CPACK_PACKAGE_CONTACT "Corvane developers <corvane@localhost>")
# Empty, so that it is not put before the packages' own descriptions.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_RESOURCE_FILE_LICENSE "${CMAKE_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_SOURCE_DIR}/cmake/DebianDocumentation.cmake")
set(CPACK_CORVANE_SOURCE_DIR "${CMAKE_SOURCE_DIR}")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(promises
"It replaces the RAW photos you choose in an iPhoto '11 library package by
JPEG copies that keep titles, comments, ratings, dates, places, keywords and
albums. A scan deletes nothing: converted originals stay, or go to the
library's trash if you ask for it. iPhoto is not needed.")

# Plugins are no libraries that a program is linked with, so they are named here: TIFF is read by
# one of qt6-image-formats-plugins. Web pages are opened with xdg-open.
set(CPACK_DEBIAN_CORVANE-CLI_PACKAGE_NAME corvane-cli)
set(CPACK_DEBIAN_CORVANE-CLI_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_CORVANE-CLI_PACKAGE_DEPENDS qt6-image-formats-plugins)
set(CPACK_DEBIAN_CORVANE-CLI_PACKAGE_SUGGESTS corvane)
set(CPACK_DEBIAN_CORVANE-CLI_DESCRIPTION
"replace RAW photos of iPhoto libraries by JPEG copies
${promises}

This is the program for the terminal, which needs no display.")

# Each program is whole without the other. The icon is an SVG, which Qt draws with the plugins of
# libqt6svg6; they too are loaded at run time.
set(CPACK_DEBIAN_CORVANE_PACKAGE_NAME corvane)
set(CPACK_DEBIAN_CORVANE_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_CORVANE_PACKAGE_DEPENDS
    "hicolor-icon-theme, libqt6svg6, qt6-image-formats-plugins")
set(CPACK_DEBIAN_CORVANE_PACKAGE_RECOMMENDS "ca-certificates, qt6-wayland, xdg-utils")
set(CPACK_DEBIAN_CORVANE_PACKAGE_SUGGESTS corvane-cli)
set(CPACK_DEBIAN_CORVANE_DESCRIPTION
"replace RAW photos of iPhoto libraries by JPEG copies (desktop)
${promises}

This is the program with windows: it shows the library's photos and converts
those that are selected.")

# CPack is told at the end which programs are built.
macro(corvane_set_up_cpack)
    set(CPACK_COMPONENTS_ALL corvane-cli)
    if(TARGET corvane)
        list(APPEND CPACK_COMPONENTS_ALL corvane)
    endif()
    include(CPack)
endmacro()
cmake_language(DEFER DIRECTORY "${CMAKE_SOURCE_DIR}" CALL corvane_set_up_cpack)

set(completions "${CMAKE_SOURCE_DIR}/resources/completion")
install(FILES "${completions}/corvane-cli.bash" RENAME corvane-cli
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
install(FILES "${completions}/_corvane-cli"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions")
install(FILES "${completions}/corvane-cli.fish"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
