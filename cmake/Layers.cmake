# Compiler options, and functions that define the static library and the tests of a layer.

# -Wno-sign-conversion: g++ does not include sign conversions in -Wconversion, but clang does.
add_library(penwick_options INTERFACE)
target_include_directories(penwick_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(penwick_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor
    $<$<BOOL:${PENWICK_WARNINGS_AS_ERRORS}>:-Werror>)
# -pthread defines _REENTRANT. On some systems pkg-config adds it for the script engine. A precompiled header
# can be shared only by targets with the same macros, so every target is compiled with it.
target_compile_options(penwick_options INTERFACE -pthread)
# With optimisation, g++ (at least 12 and 14) falsely reports uninitialised reads in moves of a std::variant
# of Qt containers and in copies of a tl::expected of small values. clang's warnings do not depend on
# optimisation, and its analyzer finds what they miss.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(penwick_options INTERFACE -Wno-maybe-uninitialized)
endif()
target_compile_definitions(penwick_options INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_FOREACH
    QT_NO_KEYWORDS # The script engine's headers include GLib, which uses `signals` as a name.
    PENWICK_VERSION="${PROJECT_VERSION}")
# The size of a chunk. The fuzz preset makes it small, so that the short texts of a fuzzer also have a tree
# of several chunks.
set(PENWICK_LEAF_UNITS 4096 CACHE STRING "UTF-16 code units that one chunk of a text holds at most")
target_compile_definitions(penwick_options INTERFACE PENWICK_LEAF_UNITS=${PENWICK_LEAF_UNITS})
# A unity build puts several sources in one file. There, a constant in one source is global for the next.
if(CMAKE_UNITY_BUILD)
    target_compile_options(penwick_options INTERFACE -Wno-shadow)
endif()
if(PENWICK_FUZZ)
    target_compile_options(penwick_options INTERFACE
        -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined
        -fno-omit-frame-pointer)
    target_link_options(penwick_options INTERFACE -fsanitize=address,undefined)
endif()
if(PENWICK_SANITIZE)
    # -fno-sanitize=vptr: the script engine's library has no run-time type information. It may call the
    # instrumented copies of inline standard library functions in our code, where this check would reject its
    # objects.
    target_compile_options(penwick_options INTERFACE
        -fsanitize=address,undefined -fno-sanitize=vptr -fno-sanitize-recover=undefined
        -fno-omit-frame-pointer)
    target_link_options(penwick_options INTERFACE -fsanitize=address,undefined)
endif()

# add_layer(NAME [SYSTEM] SOURCES file... LINKS target...)
#
# Defines the static library NAME from the files of one folder. tools/check-layers.py reads these calls:
# the library may include only from the layers that LINKS names, and headers of the operating system only
# if SYSTEM is given.
function(add_layer name)
    cmake_parse_arguments(PARSE_ARGV 1 LAYER "SYSTEM" "" "SOURCES;LINKS")
    add_library(${name} STATIC ${LAYER_SOURCES})
    target_link_libraries(${name} PUBLIC penwick_options ${LAYER_LINKS})
    if(PENWICK_QUICK_BUILD)
        penwick_use_pch(${name})
    endif()
endfunction()

if(PENWICK_QUICK_BUILD)
    include(CheckLinkerFlag)
    check_linker_flag(CXX -fuse-ld=gold PENWICK_HAS_GOLD)
endif()

# add_layer_test(SOURCE LINKS target...)
#
# Builds SOURCE, a QtTest executable named after its file, and registers it with ctest. It runs on
# the offscreen platform unless the test sets another one. PENWICK_QUICK_BUILD turns optimisation off for the
# test, but not for the layers that it links.
function(add_layer_test source)
    cmake_parse_arguments(PARSE_ARGV 1 TEST "" "" "LINKS")
    cmake_path(GET source STEM name)
    add_executable(${name} ${source})
    target_link_libraries(${name} PRIVATE ${TEST_LINKS} test_support Qt6::Test)
    if(PENWICK_QUICK_BUILD)
        # Optimising QtTest's macros doubles the compile time of a test, and triples it with sanitizers.
        target_compile_options(${name} PRIVATE -O0)
        penwick_use_pch(${name})
        if(PENWICK_HAS_GOLD) # gold links in a quarter of the time.
            target_link_options(${name} PRIVATE -fuse-ld=gold)
        endif()
    endif()
    target_compile_definitions(${name} PRIVATE
        PENWICK_TEST_DATA="${CMAKE_CURRENT_SOURCE_DIR}")
    # Run moc directly: AUTOMOC would take as long as linking the test. Without the include folders of the target,
    # moc reads no headers, which would take most of its time. But it then knows no macros of the
    # compiler or of Qt's headers, so no slot may be declared under a condition.
    set_target_properties(${name} PROPERTIES AUTOMOC OFF UNITY_BUILD OFF)
    set(moc ${CMAKE_CURRENT_BINARY_DIR}/${name}_moc/${name}.moc)
    qt6_generate_moc(${source} ${moc})
    set_source_files_properties(${source} PROPERTIES OBJECT_DEPENDS ${moc})
    # Since Qt 6.8, QTRY_VERIFY and similar macros convert milliseconds to int. g++ attributes the warning to
    # the test, clang to the header. This is set on the source because options of a source come last.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND Qt6_VERSION VERSION_GREATER_EQUAL 6.8)
        set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS -Wno-conversion)
    endif()
    target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${name}_moc)
    set_target_properties(${name} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES
        TIMEOUT 900
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;QTEST_FUNCTION_TIMEOUT=900000")
endfunction()
