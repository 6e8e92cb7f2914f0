# Helpers that keep every module and test target built the same way.

function(qarvel_warnings target)
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow
                           -Wconversion -Wno-sign-conversion)
    # GCC 12 reports false -Wrestrict overlaps inside libstdc++'s string
    # concatenation at -O3 (GCC bug 105329); the warning says nothing about
    # our code there.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
      target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    if(QARVEL_WERROR)
      target_compile_options(${target} PRIVATE -Werror)
    endif()
  endif()
endfunction()

# qarvel_module(NAME SOURCES ... DEPS ...): the static library qarvel_NAME,
# whose public headers are included as "NAME/header.h".
function(qarvel_module name)
  cmake_parse_arguments(M "" "" "SOURCES;DEPS" ${ARGN})
  add_library(qarvel_${name} STATIC ${M_SOURCES})
  target_include_directories(qarvel_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(qarvel_${name} PUBLIC ${M_DEPS})
  qarvel_warnings(qarvel_${name})
endfunction()

# qarvel_test(NAME SOURCES ... DEPS ...): one GoogleTest program registered
# with CTest, labelled with the module so that `ctest -L core` picks it.
function(qarvel_test name)
  cmake_parse_arguments(T "" "LABEL" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE ${T_DEPS} GTest::gtest GTest::gtest_main GTest::gmock)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(${name} PRIVATE
    QARVEL_SHARED_DATA="${QARVEL_SHARED_DATA}"
    QARVEL_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
    QARVEL_CLI="$<TARGET_FILE:qarvel-cli>")
  qarvel_warnings(${name})
  if(NOT T_LABEL)
    set(T_LABEL core)
  endif()
  gtest_discover_tests(${name} PROPERTIES LABELS ${T_LABEL} DISCOVERY_TIMEOUT 60)
endfunction()
