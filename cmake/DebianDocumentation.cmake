# Run by CPack on each package's tree before it is packed: what only Debian's packages have, or have
# in another place. The sources are CPACK_CORVANE_SOURCE_DIR.
find_program(GZIP gzip REQUIRED)
set(readable OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

function(compress file)
    execute_process(COMMAND "${GZIP}" -9 --no-name --force "${file}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# put_document(SOURCE FOLDER NAME): copies a file of the sources under another name.
function(put_document source folder name)
    file(MAKE_DIRECTORY "${folder}")
    configure_file("${CPACK_CORVANE_SOURCE_DIR}/${source}" "${folder}/${name}" COPYONLY
        FILE_PERMISSIONS ${readable})
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    set(share "${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share")
    set(documents "${share}/doc/${component}")
    put_document(resources/desktop/debian/copyright "${documents}" copyright)
    put_document(resources/desktop/debian/changelog "${documents}" changelog.Debian)
    put_document(CHANGELOG.md "${documents}" changelog)
    file(GLOB manuals "${share}/man/man1/*.1")
    foreach(file IN LISTS manuals ITEMS "${documents}/changelog.Debian" "${documents}/changelog")
        compress("${file}")
    endforeach()
    # Debian's zsh looks here for the completions of packages.
    if(EXISTS "${share}/zsh/site-functions")
        file(RENAME "${share}/zsh/site-functions" "${share}/zsh/vendor-completions")
    endif()
    file(CHMOD_RECURSE "${share}/doc" DIRECTORY_PERMISSIONS
        ${readable} OWNER_EXECUTE GROUP_EXECUTE WORLD_EXECUTE)
endforeach()
