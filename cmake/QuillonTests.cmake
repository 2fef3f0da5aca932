# quillon_add_tests(FOLDER LIBRARIES...)
#
# The test programs of a folder of tests/, each linked with LIBRARIES, the test support and GoogleTest:
#   *.cpp         quillon_FOLDER_tests         label unit     each test takes seconds at most
#   golden/*.cpp  quillon_FOLDER_golden_tests  label golden   compares with recorded output in tests/data
#   slow/*.cpp    quillon_FOLDER_slow_tests    label slow     minutes; run by ./test.sh --slow only
# A kind without files makes no program. The target unit_tests builds all programs of the label unit.

include(GoogleTest)

add_custom_target(unit_tests)

function(quillon_add_test_program program label timeout)
    cmake_parse_arguments(PARSE_ARGV 3 arg "" "" "SOURCES;LIBRARIES")
    if(NOT arg_SOURCES)
        return()
    endif()
    add_executable(${program} ${arg_SOURCES})
    target_compile_definitions(${program} PRIVATE
        QUILLON_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
        QUILLON_TEST_DATA_DIR="${PROJECT_SOURCE_DIR}/tests/data")
    target_link_libraries(${program} PRIVATE ${arg_LIBRARIES} quillon_test_support GTest::gtest_main)
    # What the tests call is optimised; optimising the tests themselves takes longer than it saves.
    target_compile_options(${program} PRIVATE $<$<CONFIG:Release>:-O1>)
    if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=address")
        # They watch the product. The temporaries of the tests' own checks take as long again to compile with these.
        target_compile_options(${program} PRIVATE
            -fno-sanitize=null,alignment,object-size,vptr -fno-sanitize-address-use-after-scope)
    endif()
    # A third of the time that a test file takes to compile goes into these.
    target_precompile_headers(${program} PRIVATE
        <gtest/gtest.h> <algorithm> <map> <memory> <random> <set> <string> <vector>)
    if("${label}" STREQUAL "unit")
        add_dependencies(unit_tests ${program})
    endif()
    gtest_discover_tests(${program}
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 120
        PROPERTIES LABELS ${label} TIMEOUT ${timeout})
endfunction()

function(quillon_add_tests folder)
    file(GLOB unit CONFIGURE_DEPENDS *.cpp)
    file(GLOB golden CONFIGURE_DEPENDS golden/*.cpp)
    file(GLOB slow CONFIGURE_DEPENDS slow/*.cpp)
    quillon_add_test_program(quillon_${folder}_tests unit 300 SOURCES ${unit} LIBRARIES ${ARGN})
    quillon_add_test_program(quillon_${folder}_golden_tests golden 600 SOURCES ${golden} LIBRARIES ${ARGN})
    quillon_add_test_program(quillon_${folder}_slow_tests slow 3600 SOURCES ${slow} LIBRARIES ${ARGN})
endfunction()

# quillon_join_test_files(PROGRAM [APART...])
#
# Compiles several files of a test program at a time: most of what one takes goes into the headers that all of them have. Names in
# their unnamed namespaces then have to differ; files that share names on purpose are named as APART.
function(quillon_join_test_files program)
    if(TARGET ${program})
        set_target_properties(${program} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 6)
        set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    endif()
endfunction()
