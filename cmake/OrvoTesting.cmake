# What the tests need: GoogleTest, the test support library, and a function per
# kind of test.
if(CMAKE_CXX_FLAGS MATCHES "-stdlib=libc\\+\\+|_GLIBCXX_DEBUG")
  # Debian's libraries are built for other containers and strings than these;
  # the sources of GoogleTest are for any.
  set(orvo_other_containers TRUE)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest googletest EXCLUDE_FROM_ALL SYSTEM)
  set_target_properties(gtest gtest_main gmock gmock_main PROPERTIES COMPILE_WARNING_AS_ERROR OFF)
else()
  find_package(GTest REQUIRED)
endif()

# Compiles tests/support/interpose/FUNCTION.cpp once for all who contain it.
function(orvo_add_interposer function)
  if(NOT TARGET interpose_${function})
    add_library(interpose_${function} OBJECT
      ${PROJECT_SOURCE_DIR}/tests/support/interpose/${function}.cpp)
    orvo_set_warnings(interpose_${function})
    target_include_directories(interpose_${function} PRIVATE ${PROJECT_SOURCE_DIR})
    target_compile_features(interpose_${function} PRIVATE cxx_std_17)
    target_compile_options(interpose_${function} PRIVATE -U_FORTIFY_SOURCE)
    set_target_properties(interpose_${function} PROPERTIES CXX_EXTENSIONS OFF)
  endif()
endfunction()

# orvo_add_test(NAME [SOURCES files...] [INTERPOSE functions...] [LIBRARIES ...])
#
# Builds tests/NAME_test.cpp and runs it as one test. Each function named after
# INTERPOSE is defined by the program itself (see tests/support/interpose.h).
function(orvo_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;INTERPOSE;LIBRARIES" ${ARGN})
  # clang's ThreadSanitizer does not see the locks of a program that defines
  # the lock calls itself.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_FLAGS MATCHES "sanitize=thread"
      AND ARG_INTERPOSE MATCHES "pthread_mutex")
    return()
  endif()
  set(target ${name}_test)
  add_executable(${target} ${name}_test.cpp ${ARG_SOURCES})
  foreach(function ${ARG_INTERPOSE})
    orvo_add_interposer(${function})
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:interpose_${function}>)
  endforeach()
  orvo_set_warnings(${target})
  # GoogleTest's own macros are called with nothing behind the last comma.
  target_compile_options(${target} PRIVATE
    $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>
    $<$<AND:$<CXX_COMPILER_ID:Clang>,$<VERSION_GREATER_EQUAL:$<CXX_COMPILER_VERSION>,19>>:-Wno-c++20-extensions>)
  target_link_libraries(${target} PRIVATE
    orvo_test_support orvo::orvo ${ARG_LIBRARIES} GTest::gmock_main)
  target_precompile_headers(${target} REUSE_FROM orvo_test_support)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  add_test(NAME ${name} COMMAND ${target} --gtest_brief=1)
  # In contrast to tests of the compiler, of packages or of texts.
  set_tests_properties(${name} PROPERTIES LABELS programs)
endfunction()

# orvo_add_program(NAME [SOURCE]): builds tests/programs/NAME.cpp, or another
# source named relative to that folder, as a child program of tests, which find
# it as orvo_test::ProgramPath("NAME").
function(orvo_add_program name)
  set(source ${name}.cpp)
  if(ARGC GREATER 1)
    set(source ${ARGV1})
  endif()
  add_executable(${name}_program programs/${source})
  orvo_set_warnings(${name}_program)
  target_link_libraries(${name}_program PRIVATE orvo::orvo)
  set_target_properties(${name}_program PROPERTIES
    CXX_EXTENSIONS OFF
    OUTPUT_NAME ${name}
    RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests/programs)
endfunction()

# orvo_add_plugin(NAME SOURCE): builds a module that tests load, which find it as
# orvo_test::ProgramPath("NAME.so").
function(orvo_add_plugin name source)
  add_library(${name} MODULE ${source})
  orvo_set_warnings(${name})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE orvo::orvo)
  set_target_properties(${name} PROPERTIES
    CXX_EXTENSIONS OFF
    PREFIX ""
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests/programs)
endfunction()
