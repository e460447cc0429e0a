# What most sources include, read once by the compiler where CORVANE_PRECOMPILE_HEADERS is on: that is
# a third of the work of a build. Sources name what they use all the same; other builds hold them to it.
set(CORVANE_COMMON_HEADERS
    <algorithm> <array> <chrono> <cmath> <functional> <memory> <mutex> <optional> <span> <string>
    <string_view> <utility> <vector>
    <QByteArray> <QDateTime> <QDir> <QFile> <QFileInfo> <QHash> <QList> <QObject> <QSet> <QString>
    <QStringList> <QVariant>)
set(CORVANE_COMMON_TEST_HEADERS ${CORVANE_COMMON_HEADERS} <QTemporaryDir> <gtest/gtest.h>)
set(CORVANE_COMMON_WIDGET_HEADERS
    <QAction> <QApplication> <QBoxLayout> <QImage> <QLabel> <QMessageBox> <QPushButton> <QWidget>)

# corvane_precompile(NAME header...): the target's own.
# corvane_precompile(NAME FROM target): those of another one, which is compiled with the same options.
function(corvane_precompile name)
    if(NOT CORVANE_PRECOMPILE_HEADERS)
        return()
    endif()
    cmake_parse_arguments(ARG "" "FROM" "" ${ARGN})
    if(ARG_FROM)
        target_precompile_headers(${name} REUSE_FROM ${ARG_FROM})
    else()
        target_precompile_headers(${name} PRIVATE ${ARG_UNPARSED_ARGUMENTS})
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${name} PRIVATE -fpch-preprocess) # as ccache needs it
    endif()
endfunction()
