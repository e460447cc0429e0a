# The desktop program and what makes it known to the desktop. The icon is compiled in too, for a
# program that is not installed.
if(TARGET corvane)
    qt_add_resources(icons_source "${CMAKE_SOURCE_DIR}/resources/icons/corvane_icons.qrc")
    target_sources(corvane PRIVATE ${icons_source})

    set(application io.github.corvane.Corvane)
    set(desktop "${CMAKE_SOURCE_DIR}/resources/desktop")
    set(completions "${CMAKE_SOURCE_DIR}/resources/completion")
    set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME corvane)
    install(TARGETS corvane RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
    install(FILES "${CMAKE_SOURCE_DIR}/docs/corvane.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
    install(FILES "${CMAKE_SOURCE_DIR}/resources/icons/${application}.svg"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps")
    install(FILES "${desktop}/${application}.desktop"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
    install(FILES "${desktop}/${application}.metainfo.xml"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
    install(FILES "${desktop}/${application}-mime.xml"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/mime/packages")
    install(FILES "${completions}/corvane.bash" RENAME corvane
        DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
    install(FILES "${completions}/_corvane"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions")
    install(FILES "${completions}/corvane.fish"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
endif()
