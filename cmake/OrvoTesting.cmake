# What the tests need: GoogleTest, the test support library, and a function per
# kind of test.
find_package(GTest REQUIRED)
include(GoogleTest OPTIONAL)

# Instrumentation slows programs down and changes what they allocate; a few
# tests have to know.
string(REGEX MATCH "-fsanitize=([a-z,-]*)" orvo_sanitizers "${CMAKE_CXX_FLAGS}")

# orvo_add_test(NAME [SOURCES files...] [INTERPOSE functions...] [LIBRARIES ...])
#
# Builds tests/NAME_test.cpp and runs it as one test. Each function named after
# INTERPOSE is defined by the program itself (see tests/support/interpose.h).
function(orvo_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;INTERPOSE;LIBRARIES" ${ARGN})
  list(TRANSFORM ARG_INTERPOSE
    REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/tests/support/interpose/\\1.cpp")
  set(target ${name}_test)
  add_executable(${target} ${name}_test.cpp ${ARG_SOURCES} ${ARG_INTERPOSE})
  orvo_set_warnings(${target})
  target_link_libraries(${target} PRIVATE
    orvo_test_support orvo::orvo ${ARG_LIBRARIES} GTest::gmock_main)
  target_precompile_headers(${target} REUSE_FROM orvo_test_support)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  add_test(NAME ${name} COMMAND ${target} --gtest_brief=1)
endfunction()

# orvo_add_program(NAME): builds tests/programs/NAME.cpp, a child program of
# tests, which find it as orvo_test::ProgramPath("NAME").
function(orvo_add_program name)
  add_executable(${name}_program programs/${name}.cpp)
  orvo_set_warnings(${name}_program)
  target_link_libraries(${name}_program PRIVATE orvo::orvo)
  set_target_properties(${name}_program PROPERTIES
    CXX_EXTENSIONS OFF
    OUTPUT_NAME ${name}
    RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests/programs)
endfunction()
