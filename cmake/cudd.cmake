# CUDD, the package of binary decision diagrams, as the imported target `cudd`. No Debian package
# holds its library, so it is built from source (cmake/cudd/build.sh), once for each user: all build
# folders share what lies in VOREL_CACHE, and only the first configuration needs the network.
if(NOT DEFINED CACHE{VOREL_CACHE})
  set(cache_folder "$ENV{XDG_CACHE_HOME}")
  if(cache_folder STREQUAL "" AND NOT "$ENV{HOME}" STREQUAL "")
    set(cache_folder "$ENV{HOME}/.cache")
  endif()
  execute_process(COMMAND mkdir -p "${cache_folder}/vorel" RESULT_VARIABLE status ERROR_QUIET)
  if(cache_folder STREQUAL "" OR NOT status EQUAL 0)
    set(cache_folder "${CMAKE_BINARY_DIR}")
  endif()
  set(VOREL_CACHE "${cache_folder}/vorel" CACHE PATH "libraries that are built once")
endif()

# A change of the recipe makes another folder.
set(cudd_recipe "${CMAKE_CURRENT_LIST_DIR}/cudd/build.sh" "${CMAKE_CURRENT_LIST_DIR}/cudd/support.c")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${cudd_recipe})
set(recipe_text "${CMAKE_SYSTEM_PROCESSOR}")
foreach(file IN LISTS cudd_recipe)
  file(SHA256 "${file}" hash)
  string(APPEND recipe_text "${hash}")
endforeach()
string(SHA256 recipe_hash "${recipe_text}")
string(SUBSTRING "${recipe_hash}" 0 12 recipe_hash)
set(cudd_folder "${VOREL_CACHE}/cudd-${recipe_hash}")

# It is made aside and renamed, so that a folder of this name is complete. Of several
# configurations at once one builds and the others wait.
file(MAKE_DIRECTORY "${VOREL_CACHE}")
file(LOCK "${VOREL_CACHE}/cudd.lock" GUARD FILE TIMEOUT 600)
if(NOT EXISTS "${cudd_folder}")
  message(STATUS "Building CUDD in ${VOREL_CACHE}")
  file(REMOVE_RECURSE "${cudd_folder}.new")
  execute_process(COMMAND "${CMAKE_CURRENT_LIST_DIR}/cudd/build.sh" "${cudd_folder}.new"
                  RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "CUDD could not be built:\n${output}\nWithout a network, put the archive "
                        "berkeley-abc_*.orig.tar.xz of Debian's source package into ${VOREL_CACHE}.")
  endif()
  file(RENAME "${cudd_folder}.new" "${cudd_folder}")
endif()
file(LOCK "${VOREL_CACHE}/cudd.lock" RELEASE)

add_library(cudd STATIC IMPORTED)
set_target_properties(cudd PROPERTIES IMPORTED_LOCATION "${cudd_folder}/libcudd.a")
target_include_directories(cudd SYSTEM INTERFACE "${cudd_folder}/include")
target_link_libraries(cudd INTERFACE m)
