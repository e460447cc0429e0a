# One interface target carries the warnings and definitions of all our own code.
add_library(corvane_options INTERFACE)
target_compile_features(corvane_options INTERFACE cxx_std_20)
target_compile_options(corvane_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wold-style-cast -Wnon-virtual-dtor
    -Woverloaded-virtual -Wextra-semi -Wformat=2
    $<$<BOOL:${CORVANE_WARNINGS_AS_ERRORS}>:-Werror>)
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # A fixture in an anonymous namespace counts as one of a header when its source is included.
    target_compile_options(corvane_options INTERFACE -Wno-subobject-linkage)
endif()
target_compile_definitions(corvane_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_NO_URL_CAST_FROM_STRING
    QT_NO_FOREACH QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_DISABLE_DEPRECATED_BEFORE=0x060400)

# corvane_add_library(NAME [MOC] SOURCES file... PUBLIC target... PRIVATE target... PRECOMPILED header...)
# A static library of one folder: its headers are included by their bare names. MOC: Qt's meta-object
# compiler reads them, as it has to where Q_OBJECT or the like stands in one. PRECOMPILED: of its own,
# where those of corvane_foundation are not for its options, or not enough.
function(corvane_add_library name)
    cmake_parse_arguments(ARG "MOC" "" "SOURCES;PUBLIC;PRIVATE;PRECOMPILED" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ${ARG_MOC})
    target_include_directories(${name} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
    target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE corvane_options ${ARG_PRIVATE})
    if(ARG_PRECOMPILED)
        corvane_precompile(${name} ${ARG_PRECOMPILED})
    else()
        corvane_precompile(${name} FROM corvane_foundation)
    endif()
endfunction()

# Every function that the program calls of a library is looked up when it starts, none at its first
# call: in the handler of a crash the dynamic linker must not be run.
function(corvane_bind_at_start name)
    target_link_options(${name} PRIVATE LINKER:-z,now)
endfunction()
