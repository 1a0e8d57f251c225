# One static library per layer, with its links declared in one place.

# g++ does not count a change of sign under -Wconversion, and clang is to agree.
add_library(penwick_options INTERFACE)
target_include_directories(penwick_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(penwick_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor
    $<$<BOOL:${PENWICK_WARNINGS_AS_ERRORS}>:-Werror>)
# Defines _REENTRANT. pkg-config asks for it on behalf of the script engine on some systems only, and
# headers that were parsed ahead fit only where the same macros are defined; so all are compiled with it.
target_compile_options(penwick_options INTERFACE -pthread)
# Where it optimises, g++ (12 and 14 at least) takes moves of a std::variant of Qt's containers, and
# copies of a tl::expected of small values, for reads of what was never written. clang's warnings about
# it do not depend on optimisation, and its analyzer looks for what they miss.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(penwick_options INTERFACE -Wno-maybe-uninitialized)
endif()
target_compile_definitions(penwick_options INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_FOREACH
    QT_NO_KEYWORDS # GLib's headers, which the script engine's include, use `signals` as a name.
    PENWICK_VERSION="${PROJECT_VERSION}")
# Characters in one chunk of a text. Where the texts are short, as those that a fuzzer makes are, small
# chunks let them have a tree all the same.
set(PENWICK_LEAF_UNITS 4096 CACHE STRING "UTF-16 code units that one chunk of a text holds at most")
target_compile_definitions(penwick_options INTERFACE PENWICK_LEAF_UNITS=${PENWICK_LEAF_UNITS})
if(PENWICK_FUZZ)
    target_compile_options(penwick_options INTERFACE
        -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined
        -fno-omit-frame-pointer)
    target_link_options(penwick_options INTERFACE -fsanitize=address,undefined)
endif()
if(PENWICK_SANITIZE)
    # The script engine's library has no run-time type information. It calls inline functions of the
    # standard library, finds ours, and those would take its objects for foreign ones.
    target_compile_options(penwick_options INTERFACE
        -fsanitize=address,undefined -fno-sanitize=vptr -fno-sanitize-recover=undefined
        -fno-omit-frame-pointer)
    target_link_options(penwick_options INTERFACE -fsanitize=address,undefined)
endif()

# add_layer(NAME SOURCES file... LINKS target...)
#
# Defines the static library NAME of one folder. Only what LINKS names may be included from it;
# tools/check-layers.py holds the same table and fails on an include that does not follow it.
function(add_layer name)
    cmake_parse_arguments(PARSE_ARGV 1 LAYER "" "" "SOURCES;LINKS")
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
# the offscreen platform unless the test sets another one. In a quick build the test itself is not
# optimised; the layers that it links are as ever.
function(add_layer_test source)
    cmake_parse_arguments(PARSE_ARGV 1 TEST "" "" "LINKS")
    cmake_path(GET source STEM name)
    add_executable(${name} ${source})
    target_link_libraries(${name} PRIVATE ${TEST_LINKS} test_support Qt6::Test)
    if(PENWICK_QUICK_BUILD)
        # It is the program that has to be quick; to optimise QtTest's macros takes as long as all the
        # rest of a test, and with the sanitizers' checks twice as long.
        target_compile_options(${name} PRIVATE -O0)
        penwick_use_pch(${name})
        if(PENWICK_HAS_GOLD) # It needs a quarter of the time.
            target_link_options(${name} PRIVATE -fuse-ld=gold)
        endif()
    endif()
    target_compile_definitions(${name} PRIVATE
        PENWICK_TEST_DATA="${CMAKE_CURRENT_SOURCE_DIR}")
    # What CMake does about moc by itself costs each test as much as it takes to link.
    set_target_properties(${name} PROPERTIES AUTOMOC OFF)
    set(moc ${CMAKE_CURRENT_BINARY_DIR}/${name}_moc/${name}.moc)
    qt6_generate_moc(${source} ${moc} TARGET ${name})
    set_source_files_properties(${source} PROPERTIES OBJECT_DEPENDS ${moc})
    # The macros that wait, QTRY_VERIFY and the like, turn milliseconds into an int since Qt 6.8. g++
    # counts that as the test's fault, clang as the header's. What a source asks for comes last.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND Qt6_VERSION VERSION_GREATER_EQUAL 6.8)
        set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS -Wno-conversion)
    endif()
    target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${name}_moc)
    set_target_properties(${name} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES
        TIMEOUT 300
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8")
endfunction()
