# Precompiled headers: a build parses the headers of Qt once instead of once per file. For most files, parsing
# them takes longer than compiling the rest. Such a build does not detect missing includes; the debug build
# does.

set(penwick_pch_core
    <QByteArray> <QDateTime> <QDir> <QFile> <QFileInfo> <QHash> <QJsonDocument> <QJsonObject> <QList>
    <QObject> <QString> <QStringList> <QTimer> <QVariant>
    <algorithm> <functional> <memory> <optional> <utility> <variant> <vector> <tl/expected.hpp>)
set(penwick_pch_widgets
    <QAction> <QApplication> <QLabel> <QLineEdit> <QMainWindow> <QMenu> <QPainter> <QPushButton>
    <QTextLayout> <QWidget>)
set(penwick_pch_test <QSignalSpy> <QTemporaryDir> <QTest>)

# QtTest defines the folders of each test as macros, for QFINDTESTDATA, which no test uses. Without them, its
# headers can be precompiled.
if(PENWICK_QUICK_BUILD AND TARGET Qt6::Test)
    set_target_properties(Qt6::Test PROPERTIES INTERFACE_COMPILE_DEFINITIONS QT_TESTLIB_LIB)
endif()

# Returns in `result` which precompiled header `target` can use: core or widgets, with _test for the tests, which
# are not optimised. The Qt modules that a target links define macros, which must be the same for all targets
# that share a precompiled header.
function(penwick_pch_kind result target)
    set(kind core)
    get_target_property(links ${target} LINK_LIBRARIES)
    if(links MATCHES "(^|;)([a-z_]+_ui|controls|app|Qt6::Widgets)(;|$)")
        set(kind widgets)
    endif()
    if("Qt6::Test" IN_LIST links)
        string(APPEND kind _test)
    endif()
    set(${result} ${kind} PARENT_SCOPE)
endfunction()

function(penwick_make_pch kind)
    set(owner penwick_pch_${kind})
    file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/${owner}.cpp CONTENT "")
    add_library(${owner} OBJECT EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/${owner}.cpp)
    set_target_properties(${owner} PROPERTIES AUTOMOC OFF AUTORCC OFF UNITY_BUILD OFF)
    target_link_libraries(${owner} PRIVATE penwick_options tl::expected Qt6::Core)
    set(headers ${penwick_pch_core})
    if(kind MATCHES "^widgets")
        target_link_libraries(${owner} PRIVATE Qt6::Widgets)
        list(APPEND headers ${penwick_pch_widgets})
    endif()
    if(kind MATCHES "_test$")
        target_compile_options(${owner} PRIVATE -O0)
        target_link_libraries(${owner} PRIVATE Qt6::Test)
        list(APPEND headers ${penwick_pch_test})
    endif()
    target_precompile_headers(${owner} PRIVATE ${headers})
endfunction()

# Lets the target use the precompiled header that fits it. Call this after all its links are set.
function(penwick_use_pch target)
    penwick_pch_kind(kind ${target})
    if(NOT TARGET penwick_pch_${kind})
        penwick_make_pch(${kind})
    endif()
    target_precompile_headers(${target} REUSE_FROM penwick_pch_${kind})
endfunction()
