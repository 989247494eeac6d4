# Language level, warnings and sanitizers, for all of our own targets.
add_library(vorel_settings INTERFACE)
target_compile_features(vorel_settings INTERFACE cxx_std_20)
target_include_directories(vorel_settings INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_options(vorel_settings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                                -Wnon-virtual-dtor -Woverloaded-virtual)
# With optimisation g++ 12 sees faults in its own std::string and std::sort that are not there; what
# these warnings look for, the sanitizers and the checks of the library find.
target_compile_options(vorel_settings INTERFACE
  $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds -Wno-restrict -Wno-stringop-overflow
                            -Wno-stringop-overread>)
# The standard library checks its preconditions too where assertions are kept.
target_compile_definitions(vorel_settings INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
if(VOREL_WERROR)
  target_compile_options(vorel_settings INTERFACE -Werror)
endif()
if(VOREL_SANITIZE)
  target_compile_options(vorel_settings INTERFACE -fsanitize=${VOREL_SANITIZE}
                                                  -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(vorel_settings INTERFACE -fsanitize=${VOREL_SANITIZE})
  target_compile_definitions(vorel_settings INTERFACE VOREL_SANITIZED=1)
endif()

# Reading these headers is a fifth of the work of compiling: they are compiled once. Every file
# includes what it needs all the same; scripts/test.sh also compiles without this.
file(CONFIGURE OUTPUT standard_headers.cpp CONTENT "")
add_library(standard_headers OBJECT ${CMAKE_CURRENT_BINARY_DIR}/standard_headers.cpp)
target_link_libraries(standard_headers PRIVATE vorel_settings)
target_precompile_headers(standard_headers PRIVATE
  <algorithm> <array> <cassert> <cstddef> <cstdint> <functional> <iostream> <limits> <map> <memory>
  <numeric> <optional> <set> <span> <string> <string_view> <tuple> <unordered_map> <unordered_set>
  <utility> <variant> <vector>)

# One static library per folder. vorel_library(NAME DEPENDENCY...) takes every .cpp of the folder.
function(vorel_library name)
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  list(FILTER sources EXCLUDE REGEX "[/_]main\\.cpp$")
  add_library(${name} STATIC ${sources})
  target_link_libraries(${name} PUBLIC vorel_settings ${ARGN})
  target_precompile_headers(${name} REUSE_FROM standard_headers)
endfunction()

# One test program per folder of tests. vorel_test(NAME DEPENDENCY...).
function(vorel_test name)
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  add_executable(test_${name} ${sources})
  target_link_libraries(test_${name} PRIVATE ${ARGN} test_settings)
  target_precompile_headers(test_${name} REUSE_FROM test_header)
  add_dependencies(test_${name} ${vorel_programs})
  gtest_discover_tests(test_${name} DISCOVERY_MODE PRE_TEST)
endfunction()
