# Language level, warnings and sanitizers, for all of our own targets.
add_library(vorel_settings INTERFACE)
target_compile_features(vorel_settings INTERFACE cxx_std_20)
target_include_directories(vorel_settings INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_options(vorel_settings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                                -Wnon-virtual-dtor -Woverloaded-virtual)
if(VOREL_WERROR)
  target_compile_options(vorel_settings INTERFACE -Werror)
endif()
if(VOREL_SANITIZE)
  target_compile_options(vorel_settings INTERFACE -fsanitize=${VOREL_SANITIZE}
                                                  -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(vorel_settings INTERFACE -fsanitize=${VOREL_SANITIZE})
  target_compile_definitions(vorel_settings INTERFACE VOREL_SANITIZED=1)
endif()

# One static library per folder. vorel_library(NAME DEPENDENCY...) takes every .cpp of the folder.
function(vorel_library name)
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  add_library(${name} STATIC ${sources})
  target_link_libraries(${name} PUBLIC vorel_settings ${ARGN})
endfunction()

# One test program per folder of tests. vorel_test(NAME DEPENDENCY...).
function(vorel_test name)
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  add_executable(test_${name} ${sources})
  target_include_directories(test_${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_compile_definitions(test_${name} PRIVATE
    VOREL_EXAMPLES="${CMAKE_SOURCE_DIR}/examples" VOREL_BINARY="$<TARGET_FILE:vorel>")
  target_link_libraries(test_${name} PRIVATE ${ARGN} GTest::gtest_main)
  add_dependencies(test_${name} vorel)
  gtest_discover_tests(test_${name} DISCOVERY_MODE PRE_TEST)
endfunction()
