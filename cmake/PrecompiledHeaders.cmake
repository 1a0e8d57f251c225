# Lets a build parse the headers of Qt once instead of once per file; most files take longer for those
# than for themselves. Such a build does not show that each file includes what it needs: the debug
# build does.

set(penwick_pch_core
    <QByteArray> <QDateTime> <QDir> <QFile> <QFileInfo> <QHash> <QJsonDocument> <QJsonObject> <QList>
    <QObject> <QString> <QStringList> <QTimer> <QVariant>
    <algorithm> <functional> <memory> <optional> <utility> <variant> <vector> <tl/expected.hpp>)
set(penwick_pch_widgets
    <QAction> <QApplication> <QLabel> <QLineEdit> <QMainWindow> <QMenu> <QPainter> <QPushButton>
    <QTextLayout> <QWidget>)

# Which of the modules above the headers of a target may come from: what a target links decides which
# macros of Qt's are defined, and they have to be the same for all who share what was parsed. QtTest's
# headers cannot be shared: to each test they name its own folder.
function(penwick_pch_kind result target)
    set(kind core)
    get_target_property(links ${target} LINK_LIBRARIES)
    if(links MATCHES "(^|;)([a-z_]+_ui|controls|app|Qt6::Widgets)(;|$)")
        set(kind widgets)
    endif()
    get_target_property(options ${target} COMPILE_OPTIONS)
    if("-O0" IN_LIST options)
        string(APPEND kind _plain)
    endif()
    set(${result} ${kind} PARENT_SCOPE)
endfunction()

function(penwick_make_pch kind)
    set(owner penwick_pch_${kind})
    file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/${owner}.cpp CONTENT "")
    add_library(${owner} OBJECT EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/${owner}.cpp)
    set_target_properties(${owner} PROPERTIES AUTOMOC OFF AUTORCC OFF)
    target_link_libraries(${owner} PRIVATE penwick_options tl::expected Qt6::Core)
    set(headers ${penwick_pch_core})
    if(kind MATCHES "_plain$")
        target_compile_options(${owner} PRIVATE -O0)
    endif()
    if(kind MATCHES "^widgets")
        target_link_libraries(${owner} PRIVATE Qt6::Widgets)
        list(APPEND headers ${penwick_pch_widgets})
    endif()
    target_precompile_headers(${owner} PRIVATE ${headers})
endfunction()

# Call it when all links of the target are known.
function(penwick_use_pch target)
    penwick_pch_kind(kind ${target})
    if(NOT TARGET penwick_pch_${kind})
        penwick_make_pch(${kind})
    endif()
    target_precompile_headers(${target} REUSE_FROM penwick_pch_${kind})
endfunction()
